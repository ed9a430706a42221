// A program that prints the JSON schema of scenarios.
#include <cstdio>

#include "host/scenario/whole_host.h"

namespace host::scenario {

namespace {

Json reference(const char* definition)
{
    return Json::object({{"$ref", std::string{"#/$defs/"} + definition}});
}

}  // namespace

// What the members of a derived struct are when they are absent, the struct's derivation says.
Json SchemaMaker::without_defaults(const Json& schema)
{
    if (schema.array()) {
        Json result = Json::list({});
        for (const Json& item : *schema.array())
            result.add(without_defaults(item));
        return result;
    }
    if (!schema.object())
        return schema;
    Json result = Json::object({});
    for (const auto& [key, value] : *schema.object())
        if (key != "default")
            result.append(key, without_defaults(value));
    return result;
}

// An object has no default of its own: its members have theirs.
void SchemaMaker::add(const char* key, Json schema, const std::string& help, const std::string& default_text)
{
    if (!help.empty())
        schema.append("description", help);
    if (!default_text.empty())
        if (Json value = Json::parsed(default_text); !value.object())
            schema.append("default", std::move(value));
    properties_.emplace_back(key, std::move(schema));
}

Json SchemaMaker::schema(bool is_entry) const
{
    Json::Object properties = properties_;
    properties.emplace_back(comment_key, reference("comment"));
    if (is_entry) {
        properties.emplace_back(repeat_key, reference("repeat"));
        properties.emplace_back(turns_key, reference("turns"));
    }
    Json result = Json::object({{"type", "object"}, {"properties", properties}, {"additionalProperties", false}});
    if (required_.empty())
        return result;
    if (is_entry)
        result.append("anyOf", Json::list({Json::object({{"required", required_}}),
                                           Json::object({{"required", Json::list({turns_key})}})}));
    else
        result.append("required", required_);
    return result;
}

namespace {

Json definitions()
{
    const auto one_key = [](const char* description, const char* key) {
        const Json list = Json::object({{"type", "array"}, {"minItems", 1}});
        return Json::object({{"description", description},
                             {"type", "object"},
                             {"properties", Json::object({{key, list}})},
                             {"required", Json::list({key})},
                             {"additionalProperties", false}});
    };
    const Json hex = Json::object({{"type", "object"},
                                   {"properties", Json::object({{"hex", Hex{}.schema<Value>(false)}})},
                                   {"required", Json::list({"hex"})},
                                   {"additionalProperties", false}});
    const Json series = object_format([](auto& v, Series& each) { describe_series(v, each); }).schema<Series>(false);
    return Json::object({
        {"comment", Json::object({{"type", "string"}, {"description", "A note of the author."}})},
        {"property",
         Json::object({{"description", "The value of a property: a text, or raw bytes as hexadecimal digits."},
                       {"anyOf", Json::list({Json::object({{"type", "string"}}), hex})}})},
        {"repeat",
         Json::object(
             {{"type", "integer"},
              {"minimum", 1},
              {"description", "How many entries this one stands for. Values in it may differ from turn to turn, and "
                              "{5} in a text is 5 in the first turn, 6 in the next, and so on."}})},
        {"turns", Json::object({{"type", "array"},
                                {"minItems", 1},
                                {"items", Json::object({{"type", "object"}})},
                                {"description",
                                 "Members that the turns have of their own, in front of those beside it: the first "
                                 "turn those of the first object, and so on, from the start again behind the last."}})},
        {"takesTurns",
         Json::object(
             {{"description", "A value that differs from turn to turn of an entry with \"repeat\"."},
              {"anyOf",
               Json::list({one_key("One value behind the other, from the start again behind the last.", "cycle"),
                           one_key("[turns, value]: a value for so many turns, then the next.", "runs"), series})}})},
    });
}

std::string schema()
{
    Json::Object result{{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                        {"title", "A scenario of the embedded host"}};
    const Json whole = host_format(true).schema<Host>(false);
    result.insert(result.end(), whole.object()->begin(), whole.object()->end());
    result.emplace_back("$defs", definitions());
    JsonText text{true};
    text.value(Json(result));
    return std::move(text.text);
}

}  // namespace

}  // namespace host::scenario

int main()
{
    return std::puts(host::scenario::schema().c_str()) < 0;
}
