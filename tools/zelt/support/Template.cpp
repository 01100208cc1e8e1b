#include <tools/zelt/support/Template.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/OpenPackage.h>

#include <package/PackageNames.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <utility>

namespace zelt {

namespace {

using orvstorage::ZipEntry;
using orvstorage::ZipError;
using orvstorage::ZipFailure;

Problem FromFailure(const ZipFailure& failure)
{
    if (failure.error == ZipError::EntryMissing && failure.entry == orvcapsule::kJSONFileName) {
        return {"MissingDefinition", "there is no definition.json in it"};
    }
    return {std::string(orvstorage::NameOf(failure.error)), failure.Reason(), failure.entry};
}

// Entries "stem.ext" and "stem_LOCALE.ext" with content count.
bool HasPart(const std::vector<ZipEntry>& entries, std::u8string_view stem,
             std::initializer_list<std::u8string_view> extensions)
{
    return std::any_of(entries.begin(), entries.end(), [&](const ZipEntry& entry) {
        const std::u8string_view name = entry.name;
        return entry.size != 0 && name.find(u8'/') == name.npos && name.starts_with(stem) &&
               std::any_of(extensions.begin(), extensions.end(), [&](std::u8string_view extension) {
                   return name.ends_with(extension) && (name.size() == stem.size() + extension.size() ||
                                                        name.substr(stem.size()).starts_with(u8'_'));
               });
    });
}

// A package with a long path is copied when it is opened, which may fail.
Template Open(const std::string& file)
{
    try {
        return {file, OpenPackage(ToPath(file)), false, {}, {}, {}};
    } catch (const std::filesystem::filesystem_error& error) {
        Definition none;
        none.refusals.Add({"CannotOpen", error.code().message()});
        return {file, OpenPackage({}), false, {}, {}, std::move(none)};
    }
}

// Passes on what was opened, when it is good enough.
Template Need(Template opened, bool isGood)
{
    if (!isGood) {
        throw FileError(opened.file, opened.definition.refusals.front().text);
    }
    return opened;
}

// Opens a package and reads its definition's text; tells in the definition's refusals why it could not.
Template ReadText(const std::string& file)
{
    Template read = Open(file);
    Problems& refusals = read.definition.refusals;
    if (!refusals.empty()) {
        return read;
    }
    read.entries = read.package.GetArchive().GetEntries();
    if (const ZipFailure failure = read.package.GetLastFailure()) {
        refusals.Add(FromFailure(failure));
        return read;
    }
    read.isArchive = true;
    read.text = read.package.GetZELTDescriptionJSON();
    if (const ZipFailure failure = read.package.GetLastFailure()) {
        refusals.Add(FromFailure(failure));
    }
    return read;
}

} // namespace

Template ReadTemplate(const std::string& file)
{
    Template read = ReadText(file);
    if (read.definition.refusals.empty()) {
        read.definition = ReadDefinition(read.text);
    }
    return read;
}

Template NeedText(const std::string& file)
{
    Template read = ReadTemplate(file);
    const bool isGood = !read.text.empty();
    return Need(std::move(read), isGood);
}

Template NeedCapsule(const std::string& file)
{
    Template read = ReadTemplate(file);
    const bool isGood = read.IsGood();
    return Need(std::move(read), isGood);
}

Problems CheckTemplate(const std::string& file)
{
    const Template read = ReadText(file);
    if (!read.isArchive) {
        return read.definition.refusals;
    }
    Problems problems;
    for (const ZipFailure& failure : read.package.GetArchive().Check(true)) {
        problems.Add(FromFailure(failure));
    }
    if (read.definition.refusals.empty()) {
        CheckDefinition(read.text, problems);
    } else {
        problems.Add(read.definition.refusals.front());
    }
    CheckParts(read.entries, problems);
    return problems;
}

void CheckParts(const std::vector<ZipEntry>& entries, Problems& problems)
{
    if (!HasPart(entries, u8"thumb", {u8".png"})) {
        problems.Add({"MissingPoster", "there is no poster (thumb.png)"});
    }
    if (!HasPart(entries, u8"project", {u8".tsgraphic", u8".cvgraphic"})) {
        problems.Add({"MissingProject", "there is no project (project.tsgraphic or project.cvgraphic)"});
    }
}

} // namespace zelt
