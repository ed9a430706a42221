// The JSON schema of scenarios.
#include "host/scenario/scenario.h"
#include "host/scenario/whole_host.h"

namespace host::scenario {

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

}  // namespace

std::string schema()
{
    Json::Object result{{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                        {"title", "A scenario of the embedded host"}};
    const Json whole = host_format(true).schema<Host>(false);
    result.insert(result.end(), whole.object()->begin(), whole.object()->end());
    result.emplace_back("$defs", definitions());
    JsonText text{true};
    text.value(Json(result));
    return std::move(text.text) + '\n';
}

}  // namespace host::scenario
