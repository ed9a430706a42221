// A node of a scenario: a JSON value, where it stands, and the turn of a repeated entry that it is read in.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "host/call/json.h"

namespace host::scenario {

// A value that is counted up from turn to turn: from + (offset + turn / every * step) % modulo.
struct Series {
    const Json* from = nullptr;  // which may differ from turn to turn itself
    uint64_t step = 1;
    uint64_t every = 1;
    uint64_t offset = 0;
    uint64_t modulo = 0;  // 0: none

    uint64_t increment(uint64_t turn) const
    {
        const uint64_t sum = offset + turn / every * step;
        return modulo ? sum % modulo : sum;
    }
};

// The series of a scenario, each read once, however many turns use it.
using KnownSeries = std::unordered_map<const Json*, Series>;

struct Node {
    const Json* json;  // null where there is nothing
    KnownSeries* known_series;
    const Node* parent = nullptr;
    const char* key = nullptr;  // in an object
    size_t index = 0;           // in a list
    std::optional<uint64_t> turn = {};
    bool is_entry = false;      // of a list, and repeated
    const Json* own = nullptr;  // of an entry whose turns differ: the members of this turn

    // A node below, as it is in the present turn. JSON's null counts as nothing.
    Node child(const char* child_key, const Json* value) const;
    Node child(size_t child_index, const Json* value) const;

    // The value without its series, and what the series adds to it.
    struct TurnValue {
        const Json* json;
        uint64_t increment;
    };
    TurnValue turn_value(size_t series_around = 0) const;

    // Null when the node is of another type.
    const Json::Array* array() const { return json ? json->array() : nullptr; }
    const Json::Object* object() const { return json ? json->object() : nullptr; }
    const std::string* text() const { return json ? json->text() : nullptr; }

    std::string pointer() const;
    std::string shown_value() const;
    [[noreturn]] void fail(const std::string& expected) const { fail(expected, shown_value()); }
    [[noreturn]] void fail(const std::string& expected, const std::string& found) const;
};

}  // namespace host::scenario
