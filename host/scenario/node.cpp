// Nodes of a scenario: where they are, and their value in a turn of a repeated entry.
#include "host/scenario/node.h"

#include "host/scenario/composed.h"

namespace host::scenario {

namespace {

constexpr size_t longest_found = 60;
constexpr size_t max_series = 16;  // around a value

const Json* cycled(const Node& node, const Json& cycle)
{
    const Json::Array* values = cycle.array();
    if (!values || values->empty() || node.object()->size() != 1)
        node.fail("the key \"cycle\" alone, with a list of values that take turns");
    return &(*values)[*node.turn % values->size()];
}

const Json* in_runs(const Node& node, const Json& list)
{
    const Json::Array* runs = list.array();
    if (!runs || runs->empty() || node.object()->size() != 1)
        node.fail("the key \"runs\" alone, with a list of [turns, value]");
    uint64_t turn = *node.turn;
    for (const Json& each : *runs) {
        const Json::Array* run = each.array();
        if (!run || run->size() != 2 || !run->front().natural())
            node.fail("runs of [turns, value]");
        const uint64_t turns = *run->front().natural();
        if (turn < turns)
            return &run->back();
        turn -= turns;
    }
    node.fail("runs that make up all turns of the entry");
}

Node in_turn(Node node)
{
    while (node.turn && node.object() && !node.object()->empty()) {
        const auto& [key, value] = node.object()->front();
        if (key == "cycle")
            node.json = cycled(node, value);
        else if (key == "runs")
            node.json = in_runs(node, value);
        else
            break;
    }
    if (node.json && node.json->is_null())
        node.json = nullptr;
    return node;
}

}  // namespace

Node Node::child(const char* child_key, const Json* value) const
{
    return in_turn({value, known_series, this, child_key, 0, turn});
}

Node Node::child(size_t child_index, const Json* value) const
{
    return in_turn({value, known_series, this, nullptr, child_index, turn});
}

Node::TurnValue Node::turn_value(size_t series_around) const
{
    if (!turn || !object() || !json->find("from"))
        return {json, 0};
    if (series_around == max_series)
        fail("a value with at most " + std::to_string(max_series) + " series around it");
    auto known = known_series->find(json);
    if (known == known_series->end()) {
        Series result;
        Node node = *this;
        node.turn.reset();  // the members of a series are the same in all turns
        node.is_entry = false;
        object_format([](auto& v, Series& series) { describe_series(v, series); }).read(node, result);
        known = known_series->emplace(json, result).first;
    }
    const Series& series = known->second;
    const TurnValue from = child("from", series.from).turn_value(series_around + 1);
    return {from.json, from.increment + series.increment(*turn)};
}

std::string Node::pointer() const
{
    if (!parent)
        return "";
    return parent->pointer() + "/" + (key ? escaped(key) : std::to_string(index));
}

std::string Node::shown_value() const
{
    if (!json)
        return "nothing";
    if (object())
        return "an object";
    if (array())
        return "a list of " + std::to_string(array()->size());
    std::string text = text_of(*json);
    if (text.size() > longest_found)
        text.replace(longest_found, std::string::npos, "...");
    return text;
}

void Node::fail(const std::string& expected, const std::string& what) const
{
    throw InputError(pointer() + ": expected " + expected + ", found " + what);
}

}  // namespace host::scenario
