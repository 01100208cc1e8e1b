#include <orvcore/files/shared/GuardedFolder.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileError.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/shared/PathNames.h>
#include <orvcore/files/shared/RenameOver.h>

#include <algorithm>
#include <chrono>

// Each change inside the folder is one Step, noted in the order it was made; Undo goes through them backwards. A step
// that replaced a file has the old one in the private folder as "old<number of the step>". The number is the step's
// place in `steps_`: the file is set aside under the place that the step is about to get.
//
// What is guarded against is what stands there when the call begins: a link that somebody left in the target. A program
// of the same user that swaps folders for links during the call is not: it could as well write the files itself.

namespace orvcore::detail {

namespace fs = std::filesystem;

GuardedFolder::GuardedFolder(fs::path folder)
    : folder_(std::move(folder))
{
}

GuardedFolder::~GuardedFolder()
{
    // What could not be put back stays where its user may still find it.
    if (Undo() && !private_.empty()) {
        std::error_code ignored;
        RemoveTree(private_, ignored);
    }
}

void GuardedFolder::Keep() noexcept
{
    steps_.clear();
    outer_.Keep();
}

fs::path GuardedFolder::Open(std::error_code& error)
{
    error.clear();
    // The folder of the process may change while this object works.
    folder_ = IsUsablePath(folder_) ? fs::absolute(folder_, error).lexically_normal() : fs::path();
    folder_ = WithoutClosingSeparators(folder_);
    if (folder_.empty()) {
        error = std::make_error_code(std::errc::invalid_argument);
        return {};
    }
    // These folders go again with this object, as all else does, unless Keep is called.
    if (outer_.Make(folder_, error)) {
        RemoveLeftBehind(folder_, std::chrono::hours(24));
        canonical_ = RealPath(folder_, error);
    }
    // Any name would do: only its folder counts.
    const fs::path staging = PrivateSibling(folder_ / "x");
    if (!error && orvcore::MakeDirectory(staging, error)) {
        private_ = staging;
    }
    return private_;
}

// Only a link can lead elsewhere, so only one is asked where it leads: the question costs the more the deeper it lies.
bool GuardedFolder::MakeOne(const fs::path& directory, bool& isNew, std::error_code& error) const
{
    isNew = orvcore::MakeDirectory(directory, error);
    if (!isNew && !error && InspectPath(directory, error).kind == FileKind::Link && !error) {
        const fs::path real = RealPath(directory, error);
        if (!error && !IsWithin(real, canonical_)) {
            error = FileError::OutsideTarget;
        }
    }
    return !error;
}

// Goes down folder by folder, for any of them may be a link. What was made or checked once is known and not asked for
// again: archives name the same folders thousands of times.
bool GuardedFolder::Enter(Tree::View relative, Tree::Node& node, std::error_code& error)
{
    error.clear();
    node = Tree::kRoot;
    for (std::size_t begin = 0; begin < relative.size();) {
        const std::size_t end = std::min(relative.find(fs::path::preferred_separator, begin), relative.size());
        const Tree::View name = relative.substr(begin, end - begin);
        begin = end + 1;
        if (const auto known = known_.Find(node, name)) {
            node = *known;
            continue;
        }
        bool isNew = false;
        if (!MakeOne(folder_ / relative.substr(0, end), isNew, error)) {
            return false;
        }
        node = known_.Add(node, name);
        if (isNew) {
            steps_.push_back({node, {}, false});
        }
    }
    return true;
}

bool GuardedFolder::MakeDirectory(const fs::path& relative, std::error_code& error)
{
    Tree::Node node = Tree::kRoot;
    return Enter(relative.native(), node, error);
}

bool GuardedFolder::Has(const fs::path& relative) const
{
    std::error_code ignored;
    return InspectPath(folder_ / relative, ignored).kind != FileKind::Nothing;
}

// A second name for the old file first: so there is no moment at which its place is empty. Where a file has one name
// only, it is moved.
bool GuardedFolder::SetAside(const fs::path& place, const fs::path& aside, std::error_code& error) const
{
    return CheckReplaceable(place, error) && (MakeHardLink(place, aside, error) || RenameOver(place, aside, error));
}

bool GuardedFolder::PutFile(const fs::path& from, const fs::path& relative, IfExists ifExists, std::error_code& error)
{
    Step step{Tree::kRoot, relative.filename().native(), false};
    if (!Enter(relative.parent_path().native(), step.folder, error)) {
        return false;
    }
    // What stands there may be a folder or a device: CheckReplaceable refuses these when it is set aside.
    step.hadOld = Has(relative);
    if (step.hadOld && ifExists == IfExists::Keep) {
        return true;
    }
    const fs::path place = folder_ / relative;
    if (step.hadOld) {
        if (!SetAside(place, AsideOf(steps_.size()), error)) {
            return false;
        }
        steps_.push_back(step); // from here on there is an old file to put back, also if the next step fails
    }
    if (!RenameOver(from, place, error)) {
        return false;
    }
    if (!step.hadOld) {
        steps_.push_back(step);
    }
    return true;
}

fs::path GuardedFolder::PlaceOf(const Step& step) const
{
    const fs::path folder = folder_ / known_.PathOf(step.folder, fs::path::preferred_separator);
    return step.name.empty() ? folder : folder / step.name;
}

fs::path GuardedFolder::AsideOf(std::size_t step) const
{
    return private_ / ("old" + std::to_string(step));
}

// The last step first, so that folders are empty when their turn comes. They may hold by now what others have put
// there; such a one is not removed.
bool GuardedFolder::Undo() noexcept
{
    bool isBack = true;
    for (std::size_t i = steps_.size(); i-- > 0;) {
        try {
            std::error_code error;
            // The old file is moved over whatever is there: the new one or, when the step failed half-way, itself under
            // its other name, or nothing.
            if (steps_[i].hadOld) {
                isBack = RenameOver(AsideOf(i), PlaceOf(steps_[i]), error) && isBack;
            } else {
                RemoveOne(PlaceOf(steps_[i]), error);
            }
        } catch (...) { // no memory
            isBack = false;
        }
    }
    return isBack;
}

} // namespace orvcore::detail
