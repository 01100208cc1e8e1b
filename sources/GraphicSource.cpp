#include <sources/GraphicSource.h>

#include <orvcore/files/Paths.h>

namespace orvcapsule {

unlisted_folders_exception::unlisted_folders_exception(std::vector<FolderFailure> failures)
    : filesystem_error(failures.size() == 1 ? "cannot list the templates of a folder"
                                            : "cannot list the templates of several folders, the first",
                       orvcore::PathFromUTF8(failures.front().folder), failures.front().reason)
    , failures_(std::make_shared<const std::vector<FolderFailure>>(std::move(failures)))
{
}

unlisted_folders_exception::unlisted_folders_exception(const unlisted_folders_exception&) noexcept = default;
unlisted_folders_exception& unlisted_folders_exception::operator=(const unlisted_folders_exception&) noexcept = default;
unlisted_folders_exception::~unlisted_folders_exception() = default;

const std::vector<FolderFailure>& unlisted_folders_exception::GetFailures() const noexcept
{
    return *failures_;
}

IGraphicSource::~IGraphicSource() = default;

void IGraphicSource::Initialize() {}

void IGraphicSource::Terminate() {}

std::set<orvcore::UTF8String> IGraphicSource::GetDirectories() const
{
    return {};
}

void IGraphicSource::SetFilterType(const orvcore::UTF8String&) {}

float IGraphicSource::GetProgressWeight() const
{
    return 1.0F;
}

ILocalGraphicSource::~ILocalGraphicSource() = default;

std::vector<FolderFailure> ILocalGraphicSource::GetFolderFailures() const
{
    return {};
}

std::vector<FolderState> ILocalGraphicSource::GetFolderStates() const
{
    return {};
}

Thumbnail ILocalGraphicSource::GetThumbnail(const boost::shared_ptr<CapsuleEntry>& entry,
                                            const boost::shared_ptr<CheckCancel>& cancel) const
{
    Thumbnail thumbnail{GetThumbnailPath(entry, cancel), nullptr};
    if (thumbnail.path.empty() && entry) {
        thumbnail.failure = entry->previewFailure;
    }
    return thumbnail;
}

bool ILocalGraphicSource::HasDirectory(const orvcore::UTF16String&) const
{
    return true;
}

} // namespace orvcapsule
