#include <package/detail/EntryInLanguage.h>

#include <orvcore/host/Application.h>

namespace orvcapsule::detail {

bool WasMissing(const orvstorage::ZipFile& zip)
{
    return zip.GetLastFailure().error == orvstorage::ZipError::EntryMissing;
}

bool ExtractInLanguage(const orvstorage::ZipFile& zip, std::u8string_view stem, std::u8string_view extension,
                       const std::function<bool(const orvcore::UTF8String& entry)>& extract)
{
    // Asked at each call and never kept: a host may change the application's language while a package is open.
    const std::string language = orvcore::Application::GetLanguage();
    const auto named = [&](std::u8string_view part) {
        return orvcore::UTF8String(stem).append(part).append(extension);
    };
    return extract(named(u8'_' + orvcore::UTF8String(orvcore::AsUTF8(language)))) ||
           (WasMissing(zip) && extract(named({})));
}

} // namespace orvcapsule::detail
