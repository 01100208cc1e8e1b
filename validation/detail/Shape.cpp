#include <validation/detail/Shape.h>

#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <algorithm>
#include <array>
#include <deque>
#include <utility>

namespace orvcapsule::detail {

// The schema is compiled in and so trusted: a word it lacks is a fault of this project that the first test shows, and
// nothing is checked here. Shapes hold views into the schema's text, and pointers to each other, because a definition
// of the schema may refer to itself; so neither they nor the document may move, and all live until the process ends.
//
// Of JSON Schema only the words in `Take` are known. A new one in docs/definition.schema.json needs a branch there: an
// unknown word is passed over, and its rule would silently not hold.

namespace {

using orvcore::serialization::JSONDocument;
using orvcore::serialization::JSONNode;

std::string_view TextOf(const JSONNode& node)
{
    std::string_view text;
    node.Get(text);
    return text;
}

unsigned KindOf(std::string_view type)
{
    constexpr std::array<std::pair<std::string_view, Shape::Kind>, 7> kKinds = {{{"null", Shape::kNull},
                                                                                 {"boolean", Shape::kBool},
                                                                                 {"integer", Shape::kInteger},
                                                                                 {"number", Shape::kNumber},
                                                                                 {"string", Shape::kText},
                                                                                 {"array", Shape::kList},
                                                                                 {"object", Shape::kObject}}};
    const auto* found = std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& row) { return row.first == type; });
    return found != kKinds.end() ? found->second : Shape::kAnything;
}

unsigned KindsOf(const JSONNode& type)
{
    unsigned kinds = type.IsString() ? KindOf(TextOf(type)) : 0U;
    for (const JSONNode& one : type.Children()) {
        kinds |= KindOf(TextOf(one));
    }
    return kinds;
}

Shape::Choice ChoiceOf(const JSONNode& value, std::string_view title)
{
    Shape::Choice choice{TextOf(value), 0, title};
    value.Get(choice.number);
    return choice;
}

// Reads the part of JSON Schema that the definition's schema uses.
class Schema {
public:
    Schema()
        : document_(JSONDocument::Parse(orvcore::AsUTF8(DefinitionSchema())))
        , root_(Make(document_.Root()))
    {
    }
    Schema(const Schema&) = delete;
    Schema& operator=(const Schema&) = delete;

    const Shape& Root() const
    {
        return *root_;
    }

private:
    // A reference names a definition, which may refer to itself; other words beside it are for editors.
    const Shape* Find(const JSONNode& schema)
    {
        const JSONNode* reference = schema.Find("$ref");
        if (reference == nullptr) {
            return Make(schema);
        }
        const std::string_view path = TextOf(*reference);
        const std::string_view name = path.substr(path.rfind('/') + 1);
        if (const auto known = named_.find(name); known != named_.end()) {
            return known->second;
        }
        // Known by its name before it is filled: a reference to itself on the way finds it.
        Shape& shape = shapes_.emplace_back();
        shape.name = name;
        named_.emplace(name, &shape);
        // Everything below a localised text is a part of it: a fault there spoils the text as a whole.
        const bool wasInText = std::exchange(isInText_, isInText_ || name == "localizedText");
        Fill(shape, *document_.Root().Find("$defs")->Find(name));
        isInText_ = wasInText;
        return &shape;
    }

    const Shape* Make(const JSONNode& schema)
    {
        Shape& shape = shapes_.emplace_back();
        Fill(shape, schema);
        return &shape;
    }

    void Fill(Shape& shape, const JSONNode& schema)
    {
        shape.isPart = isInText_;
        for (const JSONNode& word : schema.Children()) {
            Take(shape, word);
        }
    }

    // How the definition's schema uses the words: "anyOf" lists known values beside a way that allows any other;
    // "allOf" says by a control's type which further keys it has; "then" alone is of a value that may be an object
    // beside other kinds. "additionalProperties" is true (unknown keys are kept), false (as when it is absent), or the
    // shape of members by locale.
    void Take(Shape& shape, const JSONNode& word)
    {
        const std::string_view name = word.Key();
        if (name == "title") {
            shape.title = TextOf(word);
        } else if (name == "type") {
            shape.kinds = KindsOf(word);
        } else if (name == "minimum") {
            word.Get(shape.least);
        } else if (name == "maximum") {
            word.Get(shape.most);
        } else if (name == "minItems") {
            word.Get(shape.fewestItems);
        } else if (name == "maxItems") {
            word.Get(shape.mostItems);
        } else if (name == "items") {
            shape.items = Find(word);
        } else if (name == "properties") {
            TakeMembers(shape, word);
        } else if (name == "required") {
            for (const JSONNode& key : word.Children()) {
                shape.required.push_back(TextOf(key));
            }
        } else if (name == "additionalProperties") {
            word.Get(shape.keepsUnknown);
            shape.others = word.IsObject() ? Find(word) : nullptr;
        } else if (name == "anyOf") {
            TakeChoices(shape, word);
        } else if (name == "allOf") {
            TakeControlKinds(shape, word);
        } else if (name == "then") { // of a value that may be an object beside others
            Take(shape, *word.Find("properties"));
            Take(shape, *word.Find("required"));
        }
    }

    void TakeMembers(Shape& shape, const JSONNode& members)
    {
        for (const JSONNode& member : members.Children()) {
            shape.members.emplace(member.Key(), Find(member));
        }
    }

    static void TakeChoices(Shape& shape, const JSONNode& ways)
    {
        for (const JSONNode& way : ways.Children()) {
            if (const JSONNode* value = way.Find("const")) {
                const JSONNode* title = way.Find("title");
                shape.choices.push_back(ChoiceOf(*value, title != nullptr ? TextOf(*title) : ""));
            } else if (const JSONNode* values = way.Find("enum")) {
                for (const JSONNode& one : values->Children()) {
                    shape.choices.push_back(ChoiceOf(one, ""));
                }
            }
        }
    }

    void TakeControlKinds(Shape& shape, const JSONNode& conditions)
    {
        for (const JSONNode& condition : conditions.Children()) {
            std::int64_t kind = 0;
            condition.Find("if")->Find("properties")->Find("type")->Find("const")->Get(kind);
            shape.controlKinds.emplace(kind, Find(*condition.Find("then")));
        }
    }

    JSONDocument document_;
    std::deque<Shape> shapes_; // they point at each other
    std::map<std::string_view, const Shape*> named_;
    bool isInText_ = false;
    const Shape* root_;
};

std::string WantedInteger(const Shape& shape)
{
    if (!shape.choices.empty() && !shape.choices.front().title.empty()) {
        std::string text = "a number (";
        for (const Shape::Choice& choice : shape.choices) {
            text += std::to_string(choice.number) + ' ' + std::string(choice.title) + ", ";
        }
        return text.replace(text.size() - 2, 2, ")");
    }
    return "an integer from " + std::to_string(shape.least) + " to " + std::to_string(shape.most);
}

std::string WantedText(const Shape& shape)
{
    if (shape.choices.empty()) {
        return shape.name == "guid" ? "a GUID such as \"0f74559a-4f40-5f9a-b1ee-ea2dbd7812d8\"" : "a text";
    }
    std::string text;
    for (const Shape::Choice& choice : shape.choices) {
        text += (text.empty() ? "\"" : ", \"") + std::string(choice.text) + '"';
        text += choice.title.empty() ? "" : " (" + std::string(choice.title) + ')';
    }
    return text;
}

std::string WantedObject(const Shape& shape)
{
    constexpr std::size_t kMostNamed = 4;
    if (shape.name == "localizedText") {
        return R"(a localised text: {"strDB": [{"localeString": "en_US", "str": "..."}]})";
    }
    if (shape.others != nullptr) {
        return "an object of locale to " + Wanted(*shape.others);
    }
    std::string keys;
    for (const std::string_view key : shape.required) {
        keys += (keys.empty() ? " of \"" : ", \"") + std::string(key) + '"';
    }
    return "an object" + (shape.required.size() > kMostNamed ? std::string() : keys);
}

} // namespace

const Shape& DefinitionShape()
{
    // A worker may judge a template while the process exits.
    static orvcore::NoDestructor<Schema> schema;
    return schema->Root();
}

std::string Wanted(const Shape& shape)
{
    if (shape.kinds == Shape::kAnything) {
        return "any value";
    }
    const std::array<std::pair<Shape::Kind, std::string (*)(const Shape&)>, 7> words = {{
        {Shape::kObject, WantedObject},
        {Shape::kList,
         [](const Shape& list) {
             const std::string count =
                 list.fewestItems == 0 ? "" : " (" + std::to_string(list.fewestItems) + " of them)";
             return list.items != nullptr ? "a list, each element " + Wanted(*list.items) + count : "a list" + count;
         }},
        {Shape::kText, WantedText},
        {Shape::kNumber, [](const Shape&) { return std::string("a number"); }},
        {Shape::kInteger, WantedInteger},
        {Shape::kBool, [](const Shape&) { return std::string("true or false"); }},
        {Shape::kNull, [](const Shape&) { return std::string("null"); }},
    }};
    std::string text;
    for (const auto& [kind, describe] : words) {
        if (shape.Allows(kind)) {
            text += (text.empty() ? "" : " or ") + describe(shape);
        }
    }
    return text;
}

} // namespace orvcapsule::detail
