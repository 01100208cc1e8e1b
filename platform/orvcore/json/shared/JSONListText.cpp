#include <orvcore/json/shared/JSONListText.h>

#include <simdjson.h>

namespace orvcore::serialization {

namespace {

namespace ondemand = simdjson::ondemand;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

} // namespace

JSONListText::JSONListText(std::string text, std::string_view key)
    : text_(std::move(text))
    , rest_(JSONDocument::FromTree({}))
{
    if (text_.starts_with(kByteOrderMark)) {
        text_.erase(0, kByteOrderMark.size());
    }
    if (text_.size() > kMaxJSONSize) {
        throw json_parse_exception(JSONDocument::BeyondLimits(text_));
    }
    text_.reserve(text_.size() + simdjson::SIMDJSON_PADDING); // the parser looks beyond the end
    try {
        FindList(key);
    } catch (const simdjson::simdjson_error& error) {
        JSONDocument::Parse(AsUTF8(text_)); // knows better what is wrong
        throw json_parse_exception(error.what());
    }
    rest_ = ReadRest();
}

// The parser goes from one bracket, comma, colon or value to the next. Between two of them there is white space only,
// so that what stands before a place is found by its letter.
void JSONListText::FindList(std::string_view key)
{
    const auto offset = [this](const char* at) { return static_cast<std::size_t>(at - text_.data()); };
    ondemand::parser parser;
    ondemand::document document = parser.iterate(text_.data(), text_.size(), text_.capacity());
    if (document.type() != ondemand::json_type::object) {
        return;
    }
    for (ondemand::field field : document.get_object()) {
        if (std::string_view(field.unescaped_key()) != key) {
            continue;
        }
        begins_.clear(); // of a key that repeats the last value counts
        listBegin_ = listEnd_ = 0;
        if (field.value().type() != ondemand::json_type::array) {
            continue;
        }
        listBegin_ = offset(field.value().raw_json_token().data()) + 1;
        for (ondemand::value element : field.value().get_array()) {
            begins_.push_back(offset(element.raw_json_token().data()));
        }
        listEnd_ = text_.rfind(']', offset(document.current_location()) - 1);
    }
}

JSONDocument JSONListText::ReadRest() const
{
    return JSONDocument::Parse(AsUTF8(text_.substr(0, listBegin_) + text_.substr(listEnd_)));
}

JSONDocument JSONListText::Read(std::size_t first, std::size_t last) const
{
    const std::size_t begin = begins_[first];
    const std::size_t end = last < begins_.size() ? text_.rfind(',', begins_[last] - 1) : listEnd_;
    return JSONDocument::Parse(AsUTF8('[' + text_.substr(begin, end - begin) + ']'));
}

} // namespace orvcore::serialization
