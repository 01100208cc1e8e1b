#include <tools/zelt/support/Template.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/OpenPackage.h>

#include <filesystem>
#include <utility>

namespace zelt {

namespace {

// A package with a long path is copied when it is opened, which may fail.
Template Open(const std::string& file)
{
    try {
        return {file, OpenPackage(ToPath(file)), {}, {}, {}};
    } catch (const std::filesystem::filesystem_error& error) {
        orvcapsule::DefinitionReading none;
        none.refusals.push_back({orvcapsule::Severity::Error, "CannotOpen", error.code().message()});
        return {file, OpenPackage({}), {}, {}, std::move(none)};
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

} // namespace

Template ReadTemplate(const std::string& file)
{
    Template read = Open(file);
    if (!read.definition.refusals.empty()) {
        return read;
    }
    // Before the definition, so that the last failure is the definition's.
    read.entries = read.package.GetArchive().GetEntries();
    orvcapsule::TemplateReading reading = orvcapsule::ReadTemplate(read.package);
    read.text = std::move(reading.text);
    read.definition = std::move(reading);
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

} // namespace zelt
