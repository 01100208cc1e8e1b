#include <tools/zelt/output/FindingOutput.h>

#include <tools/zelt/output/Output.h>

#include <orvcore/json/JSONTextWriter.h>

namespace zelt {

namespace {

using orvcapsule::Finding;
using orvcapsule::Findings;
using orvcapsule::Severity;

// The findings, and after them one for each severity of which there are more.
std::vector<Finding> All(const Findings& findings)
{
    std::vector<Finding> all = findings.list;
    const auto addMore = [&all](Severity severity, std::size_t more, const char* noun) {
        if (more != 0) {
            all.push_back({severity, "MoreProblems", "and " + Count(more, std::string("more ") + noun)});
        }
    };
    addMore(Severity::Error, findings.moreErrors, "error");
    addMore(Severity::Warning, findings.moreWarnings, "warning");
    return all;
}

bool Counts(const Finding& finding, bool isStrict)
{
    return isStrict || finding.severity == Severity::Error;
}

const char* NameOf(Severity severity)
{
    return severity == Severity::Error ? "error" : "warning";
}

// All keys are there in each object, with null for what a finding has not: a program need not ask whether a key exists.
void WriteText(orvcore::serialization::JSONTextWriter& writer, std::string_view key, std::string_view text)
{
    writer.Key(key);
    text.empty() ? writer.Null() : writer.String(text);
}

void WriteNumber(orvcore::serialization::JSONTextWriter& writer, std::string_view key, std::size_t number)
{
    writer.Key(key);
    number == 0 ? writer.Null() : writer.UInt(number);
}

void Write(orvcore::serialization::JSONTextWriter& writer, const Finding& finding)
{
    writer.BeginObject();
    WriteText(writer, "severity", NameOf(finding.severity));
    WriteText(writer, "code", finding.code);
    WriteText(writer, "text", finding.text);
    WriteText(writer, "entry", orvcore::AsNarrow(finding.entry));
    // The pointer to the whole document is empty, too.
    writer.Key("pointer");
    finding.line == 0 ? writer.Null() : writer.String(std::string_view(finding.pointer));
    WriteNumber(writer, "line", finding.line);
    WriteNumber(writer, "column", finding.column);
    WriteText(writer, "found", finding.found);
    WriteText(writer, "expected", finding.expected);
    WriteText(writer, "nearest", finding.nearest);
    writer.EndObject();
}

} // namespace

bool IsGood(const Findings& findings, bool isStrict)
{
    return isStrict ? findings.list.empty() : !findings.HasErrors();
}

std::string FindingText(const Finding& finding)
{
    std::string text = finding.text;
    if (!finding.pointer.empty()) { // otherwise the text tells the place, if there is one
        text += " at line " + std::to_string(finding.line) + ", column " + std::to_string(finding.column);
    }
    if (!finding.nearest.empty()) {
        text += "; did you mean \"" + finding.nearest + "\"?";
    }
    return text;
}

std::string FindingsText(const std::string& file, const Findings& findings, bool isStrict)
{
    // What decides stands on the first line, so that scripts may take one line a file; warnings follow on lines of
    // their own.
    std::string line = file + (IsGood(findings, isStrict) ? ": OK" : ": BAD");
    std::string others;
    const char* separator = ": ";
    for (const Finding& finding : All(findings)) {
        if (Counts(finding, isStrict)) {
            line += separator + FindingText(finding);
            separator = "; ";
        } else {
            others += '\n' + Printable(file + ": warning: " + FindingText(finding));
        }
    }
    return Printable(line) + others;
}

std::string FindingsJSON(const std::string& file, const Findings& findings, bool isStrict)
{
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    WriteText(writer, "file", file);
    writer.Key("ok");
    writer.Bool(IsGood(findings, isStrict));
    writer.Key("problems");
    writer.BeginArray();
    for (const Finding& finding : All(findings)) {
        Write(writer, finding);
    }
    writer.EndArray();
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

} // namespace zelt
