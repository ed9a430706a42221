// The formats of values in a scenario: how each is read, written, and put into the schema. A format has
//
//     void read(const Node& node, Member& member) const               fails at the node
//     void write(const Target& target, const Member& member) const    one value; none for a member that is absent
//     Json schema<Member>(bool is_repeatable) const                  is_repeatable: in an entry that may be repeated
#pragma once

#include <limits>
#include <span>
#include <utility>
#include <vector>

#include "host/scenario/visitors.h"
#include "host/state/host.h"

namespace host::scenario {

// A value that takes turns may stand wherever a repeated entry has one.
Json repeatable(Json schema, bool is_repeatable);

// --- Numbers and truth ---

struct Number {
    int64_t lowest;
    uint64_t highest;

    template <class Member>
    void read(const Node& node, Member& member) const
    {
        const auto bounds = range<Member>();  // not bindings: lambdas capture none of them everywhere
        const auto [json, increment] = node.turn_value();
        const auto take = [&](auto value) {
            const bool is_in_range =
                std::cmp_greater_equal(value, bounds.first) && std::cmp_less_equal(value, bounds.second);
            if (is_in_range)
                member = static_cast<Member>(value);
            return is_in_range;
        };
        const uint64_t* natural = json ? json->natural() : nullptr;
        const int64_t* negative = json && increment == 0 ? json->negative() : nullptr;
        const bool is_taken =
            natural ? *natural + increment >= increment && take(*natural + increment) : negative && take(*negative);
        if (!is_taken)
            node.fail("a whole number from " + std::to_string(bounds.first) + " to " + std::to_string(bounds.second));
    }

    template <class Member>
    void write(const Target& target, const Member& member) const
    {
        target.text.value(member);
    }

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        const auto [low, high] = range<Member>();
        return repeatable(Json::object({{"type", "integer"}, {"minimum", low}, {"maximum", high}}), is_repeatable);
    }

private:
    template <class Member>
    constexpr std::pair<int64_t, uint64_t> range() const
    {
        using Limits = std::numeric_limits<Member>;
        return {std::cmp_greater(Limits::min(), lowest) ? static_cast<int64_t>(Limits::min()) : lowest,
                std::cmp_less(Limits::max(), highest) ? static_cast<uint64_t>(Limits::max()) : highest};
    }
};

constexpr Number number(int64_t lowest = INT64_MIN, uint64_t highest = UINT64_MAX)
{
    return {lowest, highest};
}

// Something that is on or off, of which the platform's records keep a word, which may say more.
struct Flag {
    template <class Member>
    void read(const Node& node, Member& member) const
    {
        if (const bool* value = node.json ? node.json->boolean() : nullptr) {
            member = *value;
            return;
        }
        if constexpr (!std::is_same_v<Member, bool>)
            if (node.json && node.json->natural())
                return number().read(node, member);
        node.fail("true or false");
    }

    template <class Member>
    void write(const Target& target, const Member& member) const
    {
        target.text.value(member == Member{0} || member == Member{1} ? Json(member != Member{0}) : Json(member));
    }

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        const Json type = std::is_same_v<Member, bool> ? Json("boolean") : Json::list({"boolean", "integer"});
        return repeatable(Json::object({{"type", type}}), is_repeatable);
    }
};

// --- Names ---

// One of the names; or a number that has none.
struct OneOf {
    std::span<const NamedValue> names;

    template <class Member>
    void read(const Node& node, Member& member) const
    {
        member = static_cast<Member>(read_number(node, sizeof(Member)));
    }

    template <class Member>
    void write(const Target& target, const Member& member) const
    {
        target.text.value(json_of(static_cast<uint64_t>(member)));
    }

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        return repeatable(named_schema(), is_repeatable);
    }

    uint64_t read_number(const Node& node, size_t bytes) const;
    Json json_of(uint64_t value) const;
    Json named_schema() const;
};

// A list of names, each of them bits of a word; bits without a name stand as a number.
struct Bits {
    std::span<const NamedValue> names;

    template <class Member>
    void read(const Node& node, Member& member) const
    {
        member = static_cast<Member>(read_bits(node, sizeof(Member)));
    }

    template <class Member>
    void write(const Target& target, const Member& member) const
    {
        target.text.value(json_of(member));
    }

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        return repeatable(Json::object({{"type", "array"}, {"items", OneOf{names}.named_schema()}}), is_repeatable);
    }

    uint64_t read_bits(const Node& node, size_t bytes) const;
    Json json_of(uint64_t bits) const;
};

// --- Texts ---

// In a repeated entry, {5} in it is 5, then 6, and so on.
struct Text {
    size_t longest;
    size_t shortest;

    void read(const Node& node, std::string& member) const { member = read_text(node, longest); }

    template <size_t size>
    void read(const Node& node, char (&member)[size]) const
    {
        const std::string text = read_text(node, std::min(longest, size - 1));
        std::memset(member, 0, size);
        std::memcpy(member, text.data(), text.size());
    }

    void write(const Target& target, const std::string& member) const { target.text.value(member); }

    template <size_t size>
    void write(const Target& target, const char (&member)[size]) const
    {
        target.text.value(std::string{member, strnlen(member, size)});
    }

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        return repeatable(Json::object({{"type", "string"}}), is_repeatable);
    }

    std::string read_text(const Node& node, size_t max_bytes) const;
};

constexpr Text text(size_t longest = 4096, size_t shortest = 1)
{
    return {longest, shortest};
}

// Raw bytes as hexadecimal digits.
struct Hex {
    void read(const Node& node, Value& member) const;
    void write(const Target& target, const Value& member) const;

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        return repeatable(Json::object({{"type", "string"}, {"pattern", "^([0-9a-fA-F]{2} ?)*$"}}), is_repeatable);
    }
};

// The value of a property: a text, or raw bytes as {"hex": digits}.
struct PropertyFormat {
    void read(const Node& node, Value& member) const;
    void write(const Target& target, const Value& member) const;
};

struct PropertiesFormat {
    void read(const Node& node, Properties& member) const;
    void write(const Target& target, const Properties& member) const;

    template <class Member>
    Json schema(bool) const
    {
        return Json::object(
            {{"type", "object"}, {"additionalProperties", Json::object({{"$ref", "#/$defs/property"}})}});
    }
};

// --- Addresses ---

// A MAC address in the order of its bytes, or as a number.
struct MacFormat {
    template <class Member>
    void read(const Node& node, Member& member) const
    {
        const uint64_t mac = read_number(node);
        if constexpr (std::is_same_v<Member, uint64_t>)
            member = mac;
        else
            for (size_t i = 0; i < mac_bytes; ++i)
                member[i] = static_cast<uint8_t>(mac >> 8 * (mac_bytes - 1 - i));
    }

    template <class Member>
    void write(const Target& target, const Member& member) const
    {
        uint64_t mac = 0;
        if constexpr (std::is_same_v<Member, uint64_t>)
            mac = member;
        else
            for (const uint8_t byte : member)
                mac = mac << 8 | byte;
        target.text.value(text_of(mac));
    }

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        return repeatable(Json::object({{"type", "string"}, {"pattern", "^[0-9a-fA-F]{2}(:[0-9a-fA-F]{2}){5}$"}}),
                          is_repeatable);
    }

    static uint64_t read_number(const Node& node);
    static std::string text_of(uint64_t mac);
};

// An IP address in network byte order; of IPv4 the first four bytes.
struct Ip {
    bool is_ipv6;
    IpAddress bytes;
};

struct IpFormat {
    void read(const Node& node, Ip& member) const;
    void write(const Target& target, const Ip& member) const;

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        return repeatable(Json::object({{"type", "string"}, {"pattern", "[.:]"}}), is_repeatable);
    }
};

}  // namespace host::scenario
