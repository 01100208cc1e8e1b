#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/Template.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <fontusage/FontUsageMessage.h>
#include <orvcore/json/JSONTextWriter.h>
#include <orvtarsksupport/TarskTransport.h>
#include <tools/support/fonts/MachineFonts.h>

#include <algorithm>
#include <set>

namespace zelt {

namespace {

using namespace orvtarsksupport;
using orvcapsule::Capsule;

// Nothing when the system cannot tell.
using FontNames = std::optional<std::set<std::string>>;

bool IsMissing(const FontNames& installed, const std::string& font)
{
    return installed && !installed->contains(font);
}

std::string AsJSON(const Template& read, const FontNames& installed)
{
    orvcore::serialization::JSONTextWriter writer;
    const auto textOrNull = [&writer](std::string_view key, bool isText, std::string_view text) {
        writer.Key(key);
        isText ? writer.String(text) : writer.Null();
    };
    const auto font = [&](const std::string& name) {
        writer.BeginObject();
        textOrNull("name", true, name);
        writer.Key("installed");
        installed ? writer.Bool(installed->contains(name)) : writer.Null();
        writer.EndObject();
    };
    writer.BeginObject();
    textOrNull("file", true, read.file);
    writer.Key("ok");
    writer.Bool(read.IsGood());
    textOrNull("error", !read.IsGood(), read.IsGood() ? "" : read.definition.refusals.front().text);
    writer.Key("fonts");
    if (read.IsGood()) {
        writer.BeginObject();
        for (const auto& [locale, fonts] : read.definition.capsule->GetUsedFontsLocalized()) {
            writer.Key(orvcore::ToNarrow(locale));
            writer.BeginArray();
            std::for_each(fonts.begin(), fonts.end(), font);
            writer.EndArray();
        }
        writer.EndObject();
    } else {
        writer.Null();
    }
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

std::string AsText(const std::string& file, const Capsule& capsule, const FontNames& installed)
{
    std::string text = Printable(file) + '\n';
    for (const auto& [locale, fonts] : capsule.GetUsedFontsLocalized()) {
        for (const std::string& font : fonts) {
            text += Printable("  " + orvcore::ToNarrow(locale) + ": " + font);
            text += IsMissing(installed, font) ? " (missing)\n" : "\n";
        }
    }
    return text;
}

// What one package says of its fonts.
struct Needs {
    std::string text;
    std::shared_ptr<Capsule> capsule; // null when the package was refused
    std::string refusal;
};

// Takes messages on to the transport in use and notes how each ends: the library itself keeps it quiet.
class Witness final : public ITarskTransport {
public:
    TarskResult Send(const TarskMessage& message, orvcore::UTF8String& reply) override
    {
        result = transport_->Send(message, reply);
        return result;
    }
    TarskResult result{TarskStatus::BadMessage}; // of a message that never came here

private:
    const std::shared_ptr<ITarskTransport> transport_ = GetTarskTransport();
};

std::string Now()
{
    return to_iso_extended_string(boost::posix_time::second_clock::universal_time()) + 'Z';
}

// Stops at the first failure: what ails one message ails the others, and each would wait for the broker again.
void Report(const std::set<std::string>& fonts, const std::string& document)
{
    const auto witness = std::make_shared<Witness>();
    SetTarskTransport(witness);
    for (const std::string& font : fonts) {
        orvcapsule::SendFontUsageMessage(orvcore::ToUTF8(font), orvcore::ToUTF8(document), orvcore::ToUTF8(Now()),
                                         u8"use");
        if (!witness->result) {
            throw std::runtime_error("the font " + font + " was not reported: " + witness->result.Message());
        }
    }
}

} // namespace

ExitCode RunFonts(const FontsOptions& options)
{
    // Once for all packages: the system's whole table is read.
    const FontNames installed = orvtools::InstalledFontNames();
    std::set<std::string> needed;
    const auto read = [&](const std::string& file) {
        const Template from = ReadTemplate(file);
        return Needs{options.json    ? AsJSON(from, installed) + '\n'
                     : from.IsGood() ? AsText(file, *from.definition.capsule, installed)
                                     : "",
                     from.definition.capsule, from.IsGood() ? "" : from.definition.refusals.front().text};
    };
    ExitCode exit = ForEachPackage(options.packages, "reading", read, [&](const std::string& file, const Needs& needs) {
        Print(needs.text);
        if (needs.capsule == nullptr) {
            throw FileError(file, needs.refusal);
        }
        for (const auto& [locale, fonts] : needs.capsule->GetUsedFontsLocalized()) {
            needed.insert(fonts.begin(), fonts.end());
        }
    });
    if (options.document) {
        const ExitCode reported = OnFile(*options.document, [&] { Report(needed, *options.document); });
        exit = reported == ExitCode::kDone ? exit : reported;
    }
    return exit;
}

} // namespace zelt
