#include <tools/zelt/panel/Saving.h>

#include <tools/zelt/editing/DefinitionEditor.h>
#include <tools/zelt/editing/DefinitionStore.h>
#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/Template.h>

#include <orvcore/files/Files.h>
#include <orvcore/json/JSON.h>
#include <package/PackageNames.h>
#include <sources/SourceNames.h>

#include <algorithm>
#include <mutex>

// A page may be old: the template may have changed or gone since it was shown, and another page may save at the same
// time. So the definition is read again for each save, the changes are made in that text, and the store is refused when
// another program comes in between. Saves run one at a time, which makes "this name is free" hold until the copy is
// there; another program is not kept out by that.

namespace zelt {

namespace {

namespace fs = std::filesystem;
namespace json = orvcore::serialization;
using orvcore::AsNarrow;

std::string TextOf(const json::Variant& object, std::u8string_view key)
{
    const auto* text = json::AsString(json::GetVariantInObject(object, key));
    if (text == nullptr) {
        throw UsageError("the request's \"" + std::string(AsNarrow(key)) + "\" is no text");
    }
    return std::string(AsNarrow(*text));
}

std::vector<SaveRequest::Text> NamesOf(const json::Variant& request)
{
    std::vector<SaveRequest::Text> names;
    const json::Variant& given = json::GetVariantInObject(request, u8"names");
    if (json::AsObject(given) != nullptr) {
        for (const auto& [locale, text] : *json::AsObject(given)) {
            names.push_back({std::string(AsNarrow(locale)), TextOf(given, locale)});
        }
    }
    return names;
}

std::vector<SaveRequest::Value> ControlsOf(const json::Variant& request)
{
    std::vector<SaveRequest::Value> values;
    const json::Variant& given = json::GetVariantInObject(request, u8"controls");
    if (json::AsArray(given) != nullptr) {
        for (const auto& one : *json::AsArray(given)) {
            values.push_back({TextOf(*one, u8"id"), TextOf(*one, u8"locale"), TextOf(*one, u8"value")});
        }
    }
    return values;
}

// Names that mean no file, another folder, or on some system something else than a file of that name.
void NeedFileName(const std::string& name)
{
    constexpr std::string_view kForbidden = "/\\:*?\"<>|";
    const bool isBad =
        name.empty() || name.size() > 200 || name.front() == '.' || name.back() == ' ' ||
        name.find_first_of(kForbidden) != name.npos ||
        std::any_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
    if (isBad) {
        throw UsageError(name.empty() ? "the copy needs a file name"
                                      : "\"" + name +
                                            "\" cannot be a file's name: it must not hold any of / \\ : * ? \" "
                                            "< > | nor begin with a dot");
    }
}

fs::path CopyPath(const orvcapsule::CapsuleEntry& entry, std::string name, const std::vector<std::string>& folders)
{
    const fs::path folder = CopyFolderOf(entry, folders);
    if (folder.empty()) {
        throw UsageError("there is no folder for a copy: only cloud libraries are shown");
    }
    NeedFileName(name);
    const std::string_view end = AsNarrow(orvcapsule::kCapsuleExtn);
    fs::path path = folder / ToPath(name.ends_with(end) ? name : name.append(end));
    if (orvcore::Exists(path)) {
        throw UsageError("there is already a file \"" + name + "\"; choose another name");
    }
    return path;
}

std::string Changed(const Template& read, const SaveRequest& request)
{
    DefinitionEditor editor(AsNarrow(read.text));
    std::string wrong;
    for (const SaveRequest::Text& name : request.names) {
        editor.SetName(name.text, name.locale);
    }
    for (const SaveRequest::Value& value : request.controls) {
        try {
            editor.SetControl(value.control, value.value, value.locale, false);
        } catch (const UsageError& error) {
            wrong += (wrong.empty() ? "" : "\n") + std::string(error.what());
        }
    }
    if (!wrong.empty()) {
        throw UsageError(wrong);
    }
    NeedReadable(read.file, editor.Text());
    return editor.Text();
}

} // namespace

SaveRequest ReadSaveRequest(const std::string& body)
{
    try {
        const json::Variant request = json::JSONParse(orvcore::AsUTF8(body));
        const auto* id = std::any_cast<std::int64_t>(&json::GetVariantInObject(request, u8"id"));
        const auto* replace = std::any_cast<bool>(&json::GetVariantInObject(request, u8"replace"));
        if (id == nullptr || *id < 0 || replace == nullptr) {
            throw UsageError("the request's \"id\" or \"replace\" is missing");
        }
        return {static_cast<std::uint64_t>(*id), *replace, TextOf(request, u8"file"), NamesOf(request),
                ControlsOf(request)};
    } catch (const json::missing_key_exception& error) {
        throw UsageError("the request lacks \"" + error.GetKey() + '"');
    } catch (const json::json_parse_exception& error) {
        throw UsageError(std::string("the request is no JSON: ") + error.what());
    }
}

fs::path CopyFolderOf(const orvcapsule::CapsuleEntry& entry, const std::vector<std::string>& folders)
{
    if (entry.GetSourceID() == orvcapsule::kLocalSourceID) {
        return orvcore::PathFromUTF8(entry.path).parent_path();
    }
    return folders.empty() ? fs::path() : ToPath(folders.front());
}

std::string FreeCopyName(const orvcapsule::CapsuleEntry& entry, const fs::path& folder)
{
    const bool isLocal = entry.GetSourceID() == orvcapsule::kLocalSourceID;
    const std::string title =
        isLocal ? ToText(orvcore::PathFromUTF8(entry.path).stem()) : orvcore::ToNarrow(entry.name);
    std::string name = title + " copy";
    for (int number = 2; number < 1000 && orvcore::Exists(folder / ToPath(name + ".zelt")); ++number) {
        name = title + " copy " + std::to_string(number);
    }
    return name + ".zelt";
}

fs::path Save(const orvcapsule::CapsuleEntry& entry, const SaveRequest& request,
              const std::vector<std::string>& folders, const InterruptWatch& interrupt)
{
    static std::mutex oneAtATime; // so that of two pages that choose one name the second is refused
    const std::lock_guard lock(oneAtATime);
    const bool isLocal = entry.GetSourceID() == orvcapsule::kLocalSourceID;
    if (request.replace && !isLocal) {
        throw UsageError("a template of a cloud library is the library's to change; store a copy");
    }
    const std::string original(AsNarrow(entry.path));
    fs::path to = request.replace ? ToPath(original) : CopyPath(entry, request.file, folders);
    Template read = NeedCapsule(original);
    const std::string definition = Changed(read, request);
    if (!StoreDefinition(read, ToText(to), definition, interrupt)) {
        throw UsageError("another program has changed the template meanwhile; look at it again");
    }
    return to;
}

} // namespace zelt
