#include <lumolibmanager/detail/Manifest.h>

#include <lumolibmanager/FolderLibManager.h>

#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/text/Printable.h>
#include <orvstorage/ZipFailure.h>
#include <orvstorage/shared/EntryName.h>

#include <algorithm>

// Reads a manifest, judging it as far as no file is needed. What is wrong with the whole is thrown; what is wrong with
// one element is noted and leaves that out. Notes end after a hundred: a hostile manifest has room for thousands of bad
// elements with long names.

namespace lumolibmanager::detail {

namespace {

using orvcore::serialization::JSONDocument;
using orvcore::serialization::JSONNode;

constexpr std::size_t kMaxRefusals = 100;

std::string Quoted(std::string_view text)
{
    return '"' + orvcore::Printable(text) + '"';
}

// A text that may stand in a manifest. @throws ManifestError
std::string_view TextOf(const JSONNode* node, const std::string& what)
{
    std::string_view text;
    if (node == nullptr || !node->Get(text)) {
        throw ManifestError(what + " is missing or no text");
    }
    if (text.size() > kMaxTextSize) {
        throw ManifestError(what + " is longer than " + std::to_string(kMaxTextSize) + " bytes");
    }
    return text;
}

std::string_view TextAt(const JSONNode& object, const char* key)
{
    return TextOf(object.Find(key), Quoted(key));
}

std::string IDAt(const JSONNode& object)
{
    const std::string_view id = TextAt(object, kManifestIDKey);
    if (id.empty()) {
        throw ManifestError(Quoted(kManifestIDKey) + " is empty");
    }
    return std::string(id);
}

// The rules for the names of an archive's entries hold here, too: what one system could not store, or would store
// elsewhere, is refused on all.
std::string PathOf(const JSONNode& file)
{
    const std::string_view text = TextOf(&file, "the path of " + Quoted(file.Key()));
    orvstorage::detail::EntryName name = orvstorage::detail::CheckEntryName(orvcore::AsUTF8(text));
    if (name.error != orvstorage::ZipError::None) {
        const orvstorage::ZipFailure why{name.error, orvstorage::ZipAction::Read, {}, orvcore::ToUTF8(text), {}, {}};
        throw ManifestError(why.Reason());
    }
    return orvcore::ToNarrow(name.relative);
}

std::vector<ManifestFile> FilesOf(const JSONNode& element)
{
    const JSONNode* list = element.Find(kManifestFilesKey);
    if (list == nullptr || !list->IsObject()) {
        throw ManifestError(Quoted(kManifestFilesKey) + " is missing or no object");
    }
    if (list->Children().size() > kMaxFiles) {
        throw ManifestError("it names more than " + std::to_string(kMaxFiles) + " files");
    }
    std::vector<ManifestFile> files;
    for (const JSONNode& file : list->Children()) {
        if (list->Find(file.Key()) == &file) { // the last of a key that repeats
            files.push_back({std::string(file.Key()), PathOf(file)});
        }
    }
    const auto primary = std::find_if(files.begin(), files.end(),
                                      [](const ManifestFile& file) { return file.role == kManifestPrimaryRole; });
    if (primary == files.end()) {
        throw ManifestError("it names no primary file");
    }
    std::rotate(files.begin(), primary, primary + 1);
    return files;
}

ManifestElement ElementOf(const JSONNode& node, std::string id)
{
    return {std::move(id), std::string(TextAt(node, kManifestNameKey)), std::string(TextAt(node, kManifestTypeKey)),
            FilesOf(node)};
}

void AddElement(Manifest& manifest, const JSONNode& node, std::size_t number)
{
    std::string id;
    try {
        id = IDAt(node);
        if (manifest.byID.count(id) != 0) {
            throw ManifestError("an element before it has the same identifier");
        }
        manifest.elements.push_back(ElementOf(node, id));
        manifest.byID.emplace(manifest.elements.back().id, manifest.elements.size() - 1);
    } catch (const ManifestError& error) {
        const std::string which = id.empty() ? "element " + std::to_string(number + 1) + " of the list: " : "";
        Refuse(manifest.refused, {std::move(id), {}, which + error.what()});
    }
}

void NeedVersion(const JSONNode& root)
{
    const JSONNode* node = root.Find(kManifestVersionKey);
    std::int64_t version = 0;
    if (node == nullptr || !node->Get(version) || version < 1) {
        throw ManifestError(Quoted(kManifestVersionKey) + " is missing or no number of a version");
    }
    if (version > kManifestVersion) {
        throw ManifestError("the manifest has the format version " + std::to_string(version) +
                            ", which is newer than " + std::to_string(kManifestVersion));
    }
}

Manifest FromRoot(const JSONNode& root)
{
    if (!root.IsObject()) {
        throw ManifestError("the manifest is no JSON object");
    }
    NeedVersion(root);
    Manifest manifest;
    manifest.id = IDAt(root);
    manifest.name = TextAt(root, kManifestNameKey);
    const JSONNode* list = root.Find(kManifestElementsKey);
    if (list == nullptr || !list->IsArray()) {
        throw ManifestError(Quoted(kManifestElementsKey) + " is missing or no list");
    }
    if (list->Children().size() > kMaxElements) {
        throw ManifestError("the library has more than " + std::to_string(kMaxElements) + " elements");
    }
    manifest.elements.reserve(list->Children().size()); // `byID` looks into it
    for (std::size_t i = 0; i < list->Children().size(); ++i) {
        AddElement(manifest, list->Children()[i], i);
    }
    return manifest;
}

} // namespace

Manifest ReadManifest(std::string_view text)
{
    try {
        return FromRoot(JSONDocument::Parse(orvcore::AsUTF8(text)).Root());
    } catch (const orvcore::serialization::json_parse_exception& error) {
        throw ManifestError(std::string("the manifest is no JSON: ") + error.what());
    }
}

void Refuse(std::vector<Refusal>& refused, Refusal refusal)
{
    if (refused.size() < kMaxRefusals) {
        refused.push_back(std::move(refusal));
    } else if (refused.size() == kMaxRefusals) {
        refused.push_back({{}, {}, "more was left out; the first " + std::to_string(kMaxRefusals) + " are told"});
    }
}

} // namespace lumolibmanager::detail
