// The JSON schema of scenarios.
#include "host/scenario/scenario.h"
#include "host/scenario/whole_host.h"

namespace host::scenario {

namespace {

OrderedJson definitions()
{
    const OrderedJson any = OrderedJson::object();
    return {
        {"comment", {{"type", "string"}, {"description", "Whatever an author wants to say."}}},
        {"property",
         {{"description", "The value of a property: a text, or raw bytes as hexadecimal digits."},
          {"anyOf",
           {{{"type", "string"}},
            {{"type", "object"},
             {"properties", {{"hex", Hex{}.schema<Value>(false)}}},
             {"required", {"hex"}},
             {"additionalProperties", false}}}}}},
        {"repeat",
         {{"type", "integer"},
          {"minimum", 1},
          {"description",
           "How many entries this one stands for. Values in it may take turns, and {5} in a text is 5 in "
           "the first turn, 6 in the next, and so on."}}},
        {"turns",
         {{"type", "array"},
          {"minItems", 1},
          {"items", {{"type", "object"}}},
          {"description",
           "Members that the turns have of their own, in front of those beside it: the first turn those of "
           "the first object, and so on, from the start again behind the last."}}},
        {"takesTurns",
         {{"description", "A value that differs from turn to turn of an entry with \"repeat\"."},
          {"anyOf",
           {{{"description", "One value behind the other, from the start again behind the last."},
             {"type", "object"},
             {"properties", {{"cycle", {{"type", "array"}, {"minItems", 1}}}}},
             {"required", {"cycle"}},
             {"additionalProperties", false}},
            {{"description", "[turns, value]: a value for so many turns, then the next."},
             {"type", "object"},
             {"properties", {{"runs", {{"type", "array"}, {"minItems", 1}}}}},
             {"required", {"runs"}},
             {"additionalProperties", false}},
            object([](auto& v, Steps& steps) { describe_steps(v, steps); }).schema<Steps>(false)}}}},
    };
}

}  // namespace

std::string schema()
{
    OrderedJson made{{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                     {"title", "A scenario of the embedded host"}};
    made.update(whole_host.schema<Host>(false));
    made["$defs"] = definitions();
    return made.dump(2) + '\n';
}

}  // namespace host::scenario
