#include <kinlet/detail/RecordTables.h>

// All tables of the larger records are compiled here and nowhere else: they are templates over dozens of rows, and
// every user of the libraries would compile them again.

namespace kinlet {

namespace serialization = orvcore::serialization;

namespace {

// Read aside: a record that turns out to be unusable, or throws in the middle, leaves the caller's as it was.
template <class Record>
bool FromTree(const serialization::Variant& tree, Record& record)
{
    Record result;
    const bool usable = serialization::detail::FromTree(tree, result);
    if (usable) {
        record = std::move(result);
    }
    return usable;
}

} // namespace

serialization::Variant ToJSON(const SourceInfo& record)
{
    return serialization::detail::ToTree(record);
}

bool FromJSON(const serialization::Variant& tree, SourceInfo& record)
{
    return FromTree(tree, record);
}

serialization::Variant CapsuleParams::ToJSON() const
{
    return serialization::detail::ToTree(*this);
}

bool CapsuleParams::FromJSON(const serialization::Variant& tree)
{
    return FromTree(tree, *this);
}

namespace detail {

namespace {

// Reading starts from a fresh record, so that nothing of the old one is left.
template <class T>
bool ReplaceRecord(const JSONNode& node, T& out)
{
    out = T();
    return serialization::detail::TableCodec<T>::Read(node, out);
}

template <class T>
void PutRecord(JSONSink& sink, const T& value)
{
    serialization::detail::TableCodec<T>::Write(sink, value);
}

} // namespace

bool CheckSourceInfo(const JSONNode& node)
{
    return serialization::detail::TableCodec<SourceInfo>::Check(node);
}

bool ReadRecord(const JSONNode& node, SourceInfo& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const SourceInfo& value)
{
    PutRecord(sink, value);
}

bool ReadRecord(const JSONNode& node, CapsuleParams& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const CapsuleParams& value)
{
    PutRecord(sink, value);
}

bool ReadRecord(const JSONNode& node, SourceTextFontEditInfo& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const SourceTextFontEditInfo& value)
{
    PutRecord(sink, value);
}

bool ReadRecord(const JSONNode& node, TextEditInfo& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const TextEditInfo& value)
{
    PutRecord(sink, value);
}

bool ReadRecord(const JSONNode& node, SpreadsheetData& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const SpreadsheetData& value)
{
    PutRecord(sink, value);
}

} // namespace detail

} // namespace kinlet
