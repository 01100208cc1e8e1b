#include <lumolibmanager/detail/Manifest.h>

#include <lumolibmanager/FolderLibManager.h>

#include <orvcore/json/shared/JSONListText.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/text/Printable.h>
#include <orvstorage/ZipFailure.h>
#include <orvstorage/shared/EntryName.h>

#include <algorithm>
#include <mutex>
#include <unordered_map>

// Reads a manifest, judging it as far as no file is needed. What is wrong with the whole is thrown; what is wrong with
// one element is noted and leaves that out. Notes end after a hundred: a hostile manifest has room for thousands of bad
// elements with long names.

namespace lumolibmanager::detail {

namespace {

using orvcore::serialization::json_parse_exception;
using orvcore::serialization::JSONListText;
using orvcore::serialization::JSONNode;

constexpr std::size_t kMaxRefusals = 100;
constexpr std::size_t kElementsARead = 256;

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
        if (file.Key().size() > kMaxTextSize) {
            throw ManifestError("the name of a role is longer than " + std::to_string(kMaxTextSize) + " bytes");
        }
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

JSONListText ReadText(std::string text)
{
    try {
        return JSONListText(std::move(text), kManifestElementsKey);
    } catch (const json_parse_exception& error) {
        throw ManifestError(std::string("the manifest is no JSON: ") + error.what());
    }
}

} // namespace

// The elements that are there are never changed and never move, so that they can be read while more are made.
struct Manifest::Elements {
    explicit Elements(JSONListText list)
        : text(std::move(list))
        , count(text->Count())
    {
        made.reserve(count);
    }

    void MakeUntil(std::size_t wanted);
    void MakePiece(std::size_t end);
    void Add(const JSONNode& node);
    void RefuseNext(std::string id, const char* why);

    std::mutex mutex;
    std::optional<JSONListText> text; // until all are read
    const std::size_t count;          // of elements in the text
    std::size_t read = 0;
    std::vector<ManifestElement> made;
    std::unordered_map<std::string_view, std::size_t> byID; // where each element stands; looks into `made`
    std::vector<Refusal> refused;
};

void Manifest::Elements::MakeUntil(std::size_t wanted)
{
    while (made.size() < wanted && read < count) {
        MakePiece(std::min({count, read + kElementsARead, read + (wanted - made.size())}));
    }
    if (read == count) {
        text.reset();
    }
}

// Read together they cost less; where one is damaged, each for itself tells which.
void Manifest::Elements::MakePiece(std::size_t end)
{
    try {
        const auto piece = text->Read(read, end);
        for (const JSONNode& node : piece.Root().Children()) {
            Add(node);
        }
    } catch (const json_parse_exception& error) {
        if (end == read + 1) {
            return RefuseNext({}, error.what());
        }
        while (read < end) {
            MakePiece(read + 1);
        }
    }
}

void Manifest::Elements::Add(const JSONNode& node)
{
    std::string id;
    try {
        id = IDAt(node);
        if (byID.count(id) != 0) {
            throw ManifestError("an element before it has the same identifier");
        }
        made.push_back(ElementOf(node, id));
        byID.emplace(made.back().id, made.size() - 1);
        ++read;
    } catch (const ManifestError& error) {
        RefuseNext(std::move(id), error.what());
    }
}

void Manifest::Elements::RefuseNext(std::string id, const char* why)
{
    ++read;
    const std::string which = id.empty() ? "element " + std::to_string(read) + " of the list: " : "";
    Refuse(refused, {std::move(id), {}, which + why});
}

Manifest::Manifest(std::string text)
{
    JSONListText list = ReadText(std::move(text));
    const JSONNode& root = list.Rest().Root();
    if (!root.IsObject()) {
        throw ManifestError("the manifest is no JSON object");
    }
    NeedVersion(root);
    id_ = IDAt(root);
    name_ = TextAt(root, kManifestNameKey);
    const JSONNode* elements = root.Find(kManifestElementsKey);
    if (elements == nullptr || !elements->IsArray()) {
        throw ManifestError(Quoted(kManifestElementsKey) + " is missing or no list");
    }
    if (list.Count() > kMaxElements) {
        throw ManifestError("the library has more than " + std::to_string(kMaxElements) + " elements");
    }
    elements_ = std::make_shared<Elements>(std::move(list));
}

std::span<const ManifestElement> Manifest::First(std::size_t count) const
{
    if (!elements_) {
        return {};
    }
    const std::lock_guard lock(elements_->mutex);
    elements_->MakeUntil(count);
    return {elements_->made.data(), std::min(count, elements_->made.size())};
}

std::span<const ManifestElement> Manifest::All() const
{
    return First(kMaxElements);
}

std::optional<std::size_t> Manifest::Find(const std::string& elementID) const
{
    if (All().empty()) {
        return std::nullopt;
    }
    const auto found = elements_->byID.find(elementID); // which changes no more
    return found != elements_->byID.end() ? std::optional(found->second) : std::nullopt;
}

const std::vector<Refusal>& Manifest::Refused() const
{
    static orvcore::NoDestructor<std::vector<Refusal>> none;
    All();
    return elements_ ? elements_->refused : *none;
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
