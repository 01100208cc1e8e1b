#include <tools/zelt/output/Written.h>

#include <tools/zelt/output/Output.h>

#include <orvcore/json/JSONTextWriter.h>

namespace zelt {

namespace {

using orvcore::serialization::JSONTextWriter;

struct FactWriter {
    JSONTextWriter& writer;

    void operator()(std::uint64_t number) const
    {
        writer.UInt(number);
    }
    void operator()(const std::string& text) const
    {
        writer.String(std::string_view(text));
    }
    void operator()(const std::vector<std::string>& texts) const
    {
        writer.BeginArray();
        for (const std::string& text : texts) {
            (*this)(text);
        }
        writer.EndArray();
    }
};

} // namespace

void PrintWritten(const WriteForm& form, const std::string& file, const std::string& text, const WrittenFact& fact)
{
    if (!form.json) {
        PrintLine(Printable(file) + ": " + Printable(text));
        return;
    }
    JSONTextWriter writer;
    writer.BeginObject();
    WritePath(writer, "file", file);
    writer.Key(fact.key);
    std::visit(FactWriter{writer}, fact.value);
    writer.EndObject();
    PrintLine(orvcore::ToNarrow(writer.Take()));
}

} // namespace zelt
