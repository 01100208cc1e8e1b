#include <tools/stock/detail/Catalogue.h>

#include <capsule/Capsule.h>
#include <capsule/Serialization.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/WalkTree.h>
#include <package/CapsuleZip.h>
#include <package/PackageNames.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace orvtools::stock::detail {

// Read once, at the start, and never changed: requests look at it on several threads without a lock. Terms are matched
// by the library's own search index, so that the development service finds what local search finds.

namespace {

namespace fs = std::filesystem;
using orvcore::ToNarrow;
using orvcore::ToUTF16;

constexpr std::uint32_t kAnyType = 0;
constexpr std::uint32_t kTemplatePackages = 7;
const fs::path kPremiumFolder = "premium";
const std::vector<orvcore::UTF16String> kTables = {u"stock"};

std::uint32_t Pixels(std::int64_t size)
{
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(size, 0, std::numeric_limits<std::int32_t>::max()));
}

// Null when the package or its definition cannot be read.
std::shared_ptr<orvcapsule::Capsule> ReadCapsule(const fs::path& package)
{
    try {
        return orvcapsule::serialization::CapsuleFromJson(orvcapsule::CapsuleZip(package).GetZELTDescriptionJSON());
    } catch (const std::exception&) {
        return nullptr;
    }
}

std::shared_ptr<Template> ReadTemplate(const fs::path& package)
{
    const auto capsule = ReadCapsule(package);
    if (!capsule || capsule->GetAPIVersion().empty()) {
        return nullptr;
    }
    std::error_code ignored;
    const kinlet::SourceInfo composition = capsule->GetSourceInfo();
    auto content = std::make_shared<Template>();
    content->package = package;
    const auto name = capsule->GetDisplayName();
    content->title = ToNarrow(name.empty() ? ToUTF16(orvcore::AsNarrow(orvcore::PathToUTF8(package.stem()))) : name);
    content->description = ToNarrow(capsule->GetCapsuleDesc());
    content->creator = ToNarrow(capsule->GetAuthorApp());
    content->keywords = capsule->GetTags();
    content->width = Pixels(composition.frameSize.size.x);
    content->height = Pixels(composition.frameSize.size.y);
    content->size = orvcore::InspectTarget(package, ignored).size;
    content->format = ToFormatVersion(capsule->GetAPIVersion()).value_or(FormatVersion());
    return content;
}

// The path below the folder, without the extension, as text that can be one part of a URL's path.
// The server refuses escaped slashes and back-slashes in a path, so an identifier holds none.
std::string NameOf(const fs::path& package, const fs::path& folder)
{
    const fs::path relative = package.lexically_relative(folder).replace_extension();
    std::string name = ToNarrow(ToUTF16(orvcore::AsNarrow(orvcore::PathToUTF8(relative))));
    std::replace_if(
        name.begin(), name.end(),
        [](char letter) {
            return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f || letter == '/' || letter == '\\';
        },
        '.');
    return name.find_first_not_of('.') == name.npos ? "_" + name : name;
}

bool IsBelowPremium(const fs::path& package, const fs::path& folder)
{
    const fs::path relative = package.lexically_relative(folder).parent_path();
    return std::find(relative.begin(), relative.end(), kPremiumFolder) != relative.end();
}

bool Suits(const Asset& asset, const Query& query)
{
    const Template& content = *asset.content;
    const auto& wanted = query.categories;
    return (!query.id || asset.id == *query.id) && (!query.premium || content.premium == *query.premium) &&
           (query.type == kAnyType || query.type == kTemplatePackages) &&
           (!query.newest || content.format <= *query.newest) &&
           (wanted.empty() || std::find(wanted.begin(), wanted.end(), content.category) != wanted.end());
}

} // namespace

Catalogue::Catalogue(const fs::path& folder, std::uint32_t copies)
    : folder_(u8"orvcapsule-stock")
{
    if (index_.Open(orvcore::PathToUTF16(folder_.Path() / "index")) != orvmetadatadb::kSuccess ||
        index_.UpdateTable(kTables) != orvmetadatadb::kSuccess) {
        throw std::runtime_error("the search index cannot be made");
    }
    Read(folder, copies);
}

void Catalogue::Read(const fs::path& folder, std::uint32_t copies)
{
    std::uint32_t categories = 0;
    // The walk goes depth first, so all that follows a direct sub-folder lies in it until the next one comes.
    std::uint32_t category = 0; // of the sub-folder that is walked
    orvcore::TreeVisitor visitor;
    visitor.visit = [&](const fs::path& path, orvcore::FileKind kind) {
        const bool isDirect = path.parent_path() == folder;
        if (kind == orvcore::FileKind::Directory) {
            category = isDirect ? ++categories : category;
        } else if (path.extension() == orvcore::PathFromUTF8(orvcapsule::kCapsuleExtn)) {
            if (const auto content = ReadTemplate(path)) {
                content->category = isDirect ? 0 : category;
                content->premium = IsBelowPremium(path, folder);
                Add(content, NameOf(path, folder), copies);
            } else {
                unreadable_.push_back(path);
            }
        }
        return orvcore::WalkNext::GoOn;
    };
    visitor.fail = [&](const fs::path& unread, const std::error_code& error) {
        if (unread == folder) {
            throw fs::filesystem_error("read", folder, error);
        }
        unreadable_.push_back(unread);
        return orvcore::WalkNext::GoOn;
    };
    orvcore::WalkTree(folder, visitor);
}

void Catalogue::Add(const std::shared_ptr<Template>& content, std::string name, std::uint32_t copies)
{
    // Copies share one template, and the index has it once: a thousand copies cost no thousand rows.
    content->number = templates_++;
    Index(*content);
    for (std::uint32_t copy = 1; copy <= copies; ++copy) {
        std::string id = copy == 1 ? name : name + '~' + std::to_string(copy);
        while (!byID_.emplace(id, assets_.size()).second) { // "a/b" beside "a.b"
            id += '_';
        }
        assets_.push_back({std::move(id), content});
    }
}

void Catalogue::Index(const Template& content)
{
    std::vector<std::string> texts = content.keywords;
    texts.insert(texts.end(), {content.title, content.description, content.creator});
    const auto key = ToUTF16(std::to_string(content.number));
    for (const std::string& text : texts) {
        if (!text.empty()) {
            static_cast<void>(index_.InsertRow(key, {ToUTF16(text)}));
        }
    }
}

// Of each template, whether all terms find it.
std::vector<bool> Catalogue::Matching(const std::vector<std::string>& terms)
{
    std::vector<bool> matching(templates_, terms.empty());
    std::vector<orvmetadatadb::MatchCondition> conditions;
    for (const std::string& term : terms) {
        conditions.push_back({ToUTF16(term), kTables, {orvmetadatadb::MatchCondition::kContains}});
    }
    std::vector<orvcore::UTF16String> keys;
    if (!terms.empty() && index_.Match(conditions, orvmetadatadb::kMatchAll, keys) != orvmetadatadb::kSuccess) {
        throw std::runtime_error("the search index cannot be read");
    }
    for (const auto& key : keys) {
        matching[std::stoul(ToNarrow(key))] = true;
    }
    return matching;
}

std::vector<const Asset*> Catalogue::Find(const Query& query)
{
    const std::vector<bool> matching = Matching(query.terms);
    std::vector<const Asset*> found;
    for (const Asset& asset : assets_) {
        if (matching[asset.content->number] && Suits(asset, query)) {
            found.push_back(&asset);
        }
    }
    return found;
}

const Asset* Catalogue::FindID(const std::string& id) const
{
    const auto found = byID_.find(id);
    return found == byID_.end() ? nullptr : &assets_[found->second];
}

} // namespace orvtools::stock::detail
