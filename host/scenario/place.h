// A place in a scenario: a JSON value, where it stands, and which turn of a repeated entry it is read in.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>

namespace host::scenario {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;  // what is written: members stand in the order of their description

// What is wrong with a scenario: `/switches/0/mtu: expected a whole number from 68 to 65535, found "large"`.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A value that is counted up from turn to turn: from + (offset + turn / every * step) % modulo.
struct Steps {
    const Json* from = nullptr;  // which may take turns itself
    uint64_t step = 1;
    uint64_t every = 1;
    uint64_t offset = 0;
    uint64_t modulo = 0;  // 0: none

    uint64_t added(uint64_t turn) const
    {
        const uint64_t sum = offset + turn / every * step;
        return modulo ? sum % modulo : sum;
    }
};

// The Steps of a scenario, each read once however many turns it is used in.
using KnownSteps = std::unordered_map<const Json*, Steps>;

struct Place {
    const Json* json;  // null where there is nothing
    KnownSteps* known_steps;
    const Place* parent = nullptr;
    const char* key = nullptr;  // in an object
    size_t index = 0;           // in a list
    std::optional<uint64_t> turn = {};
    bool is_entry = false;      // of a list, and repeated
    const Json* own = nullptr;  // of an entry whose turns differ: what this turn has of its own

    // A value below; one that takes turns is that of the present turn, and null is as good as none.
    Place child(const char* child_key, const Json* value) const;
    Place child(size_t child_index, const Json* value) const;

    // What stands here without its Steps, and what these add to it.
    struct Counted {
        const Json* json;
        uint64_t added;
    };
    Counted counted(size_t steps_around = 0) const;

    std::string pointer() const;
    std::string found() const;
    [[noreturn]] void fail(const std::string& expected) const;
};

}  // namespace host::scenario
