// Places in a scenario: where they are, and what stands there in a turn of a repeated entry.
#include "host/scenario/place.h"

#include "host/scenario/composed.h"

namespace host::scenario {

namespace {

constexpr size_t longest_found = 60;
constexpr size_t most_steps = 16;  // around a value

const Json* cycled(const Place& place)
{
    const Json& values = *place.json->find("cycle");
    if (!values.is_array() || values.empty() || place.json->size() != 1)
        place.fail("the key \"cycle\" alone, with a list of values that take turns");
    return &values[*place.turn % values.size()];
}

const Json* in_runs(const Place& place)
{
    const Json& runs = *place.json->find("runs");
    if (!runs.is_array() || runs.empty() || place.json->size() != 1)
        place.fail("the key \"runs\" alone, with a list of [turns, value]");
    uint64_t turn = *place.turn;
    for (const Json& run : runs) {
        if (!run.is_array() || run.size() != 2 || !run[0].is_number_unsigned())
            place.fail("runs of [turns, value]");
        const auto turns = run[0].get<uint64_t>();
        if (turn < turns)
            return &run[1];
        turn -= turns;
    }
    place.fail("runs that make up all turns of the entry");
}

Place in_turn(Place place)
{
    while (place.turn && place.json && place.json->is_object() && !place.json->empty())
        if (place.json->begin().key() == "cycle")
            place.json = cycled(place);
        else if (place.json->begin().key() == "runs")
            place.json = in_runs(place);
        else
            break;
    if (place.json && place.json->is_null())
        place.json = nullptr;
    return place;
}

// Of a JSON pointer, "~" and "/" are written as "~0" and "~1".
std::string escaped(const std::string& key)
{
    std::string made;
    for (const char character : key)
        if (character == '~' || character == '/')
            made += character == '~' ? "~0" : "~1";
        else
            made += character;
    return made;
}

}  // namespace

Place Place::child(const char* child_key, const Json* value) const
{
    return in_turn({value, known_steps, this, child_key, 0, turn});
}

Place Place::child(size_t child_index, const Json* value) const
{
    return in_turn({value, known_steps, this, nullptr, child_index, turn});
}

Place::Counted Place::counted(size_t steps_around) const
{
    if (!turn || !json || !json->is_object() || !json->contains("from"))
        return {json, 0};
    if (steps_around == most_steps)
        fail("a value with at most " + std::to_string(most_steps) + " steps around it");
    auto known = known_steps->find(json);
    if (known == known_steps->end()) {
        Steps made;
        Place place = *this;
        place.turn.reset();  // how to step does not take turns
        place.is_entry = false;
        object([](auto& v, Steps& steps) { describe_steps(v, steps); }).read(place, made);
        known = known_steps->emplace(json, made).first;
    }
    const Steps& steps = known->second;
    const Counted from = child("from", steps.from).counted(steps_around + 1);
    return {from.json, from.added + steps.added(*turn)};
}

std::string Place::pointer() const
{
    if (!parent)
        return "";
    return parent->pointer() + "/" + (key ? escaped(key) : std::to_string(index));
}

std::string Place::found() const
{
    if (!json)
        return "nothing";
    if (json->is_object())
        return "an object";
    if (json->is_array())
        return "a list of " + std::to_string(json->size());
    std::string text = json->dump(-1, ' ', true, Json::error_handler_t::replace);
    if (text.size() > longest_found)
        text.replace(longest_found, std::string::npos, "...");
    return text;
}

void Place::fail(const std::string& expected) const
{
    throw Error(pointer() + ": expected " + expected + ", found " + found());
}

}  // namespace host::scenario
