// The kinds of values in a scenario: how each is read, written, and put into the schema. A kind has
//
//     void read(const Place& place, Member& member) const    fails at the place
//     OrderedJson write(const Member& member) const          null: nothing to write
//     OrderedJson schema<Member>(bool is_repeatable) const   is_repeatable: within an entry that may be repeated
#pragma once

#include <limits>
#include <span>
#include <utility>
#include <vector>

#include "host/host.h"
#include "host/scenario/visitors.h"

namespace host::scenario {

// A value that takes turns may stand wherever a repeated entry has one.
OrderedJson repeatable(OrderedJson schema, bool is_repeatable);

// --- Numbers and truth ---

struct Number {
    int64_t lowest;
    uint64_t highest;

    template <class Member>
    void read(const Place& place, Member& member) const
    {
        const auto bounds = range<Member>();  // not bindings: lambdas capture none of them everywhere
        const auto [json, added] = place.counted();
        const auto take = [&](auto value) {
            const bool is_in_range =
                std::cmp_greater_equal(value, bounds.first) && std::cmp_less_equal(value, bounds.second);
            if (is_in_range)
                member = static_cast<Member>(value);
            return is_in_range;
        };
        const bool is_taken = json && (json->is_number_unsigned() ? take(json->template get<uint64_t>() + added)
                                                                  : json->is_number_integer() && added == 0 &&
                                                                        take(json->template get<int64_t>()));
        if (!is_taken)
            place.fail("a whole number from " + std::to_string(bounds.first) + " to " + std::to_string(bounds.second));
    }

    template <class Member>
    OrderedJson write(const Member& member) const
    {
        return member;
    }

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        const auto [low, high] = range<Member>();
        return repeatable({{"type", "integer"}, {"minimum", low}, {"maximum", high}}, is_repeatable);
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
    void read(const Place& place, Member& member) const
    {
        if (place.json && place.json->is_boolean()) {
            member = place.json->template get<bool>();
            return;
        }
        if constexpr (!std::is_same_v<Member, bool>)
            if (place.json && place.json->is_number_unsigned())
                return number().read(place, member);
        place.fail("true or false");
    }

    template <class Member>
    OrderedJson write(const Member& member) const
    {
        return member == Member{0} || member == Member{1} ? OrderedJson(member != Member{0}) : OrderedJson(member);
    }

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        OrderedJson type = "boolean";
        if (!std::is_same_v<Member, bool>)
            type = {"boolean", "integer"};
        return repeatable({{"type", type}}, is_repeatable);
    }
};

// --- Names ---

struct Name {
    const char* name;
    uint64_t value;
};

// One of the names; or a number that has none.
struct OneOf {
    std::span<const Name> names;

    template <class Member>
    void read(const Place& place, Member& member) const
    {
        member = static_cast<Member>(read_number(place, sizeof(Member)));
    }

    template <class Member>
    OrderedJson write(const Member& member) const
    {
        return written(static_cast<uint64_t>(member));
    }

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        return repeatable(named_schema(), is_repeatable);
    }

    uint64_t read_number(const Place& place, size_t bytes) const;
    OrderedJson written(uint64_t value) const;
    OrderedJson named_schema() const;
};

// A list of names, each of them bits of a word; bits without a name stand as a number.
struct Bits {
    std::span<const Name> names;

    template <class Member>
    void read(const Place& place, Member& member) const
    {
        member = static_cast<Member>(read_bits(place, sizeof(Member)));
    }

    template <class Member>
    OrderedJson write(const Member& member) const
    {
        return written(member);
    }

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        return repeatable({{"type", "array"}, {"items", OneOf{names}.named_schema()}}, is_repeatable);
    }

    uint64_t read_bits(const Place& place, size_t bytes) const;
    OrderedJson written(uint64_t bits) const;
};

// --- Texts ---

// In a repeated entry, {5} in it is 5, then 6, and so on.
struct Text {
    size_t longest;
    size_t shortest;

    void read(const Place& place, std::string& member) const { member = read_text(place, longest); }

    template <size_t size>
    void read(const Place& place, char (&member)[size]) const
    {
        const std::string text = read_text(place, std::min(longest, size - 1));
        std::memset(member, 0, size);
        std::memcpy(member, text.data(), text.size());
    }

    OrderedJson write(const std::string& member) const { return member; }

    template <size_t size>
    OrderedJson write(const char (&member)[size]) const
    {
        return std::string{member, strnlen(member, size)};
    }

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        return repeatable({{"type", "string"}}, is_repeatable);
    }

    std::string read_text(const Place& place, size_t most) const;
};

constexpr Text text(size_t longest = 4096, size_t shortest = 1)
{
    return {longest, shortest};
}

// Raw bytes as hexadecimal digits.
struct Hex {
    void read(const Place& place, Value& member) const;
    OrderedJson write(const Value& member) const;

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        return repeatable({{"type", "string"}, {"pattern", "^([0-9a-fA-F]{2} ?)*$"}}, is_repeatable);
    }
};

// The value of a property: a text, or raw bytes as {"hex": digits}.
struct PropertyKind {
    void read(const Place& place, Value& member) const;
    OrderedJson write(const Value& member) const;
};

struct PropertiesKind {
    void read(const Place& place, Properties& member) const;
    OrderedJson write(const Properties& member) const;

    template <class Member>
    OrderedJson schema(bool) const
    {
        return {{"type", "object"}, {"additionalProperties", {{"$ref", "#/$defs/property"}}}};
    }
};

// --- Addresses ---

// A MAC address in the order of its bytes, or as a number.
struct Mac48 {
    template <class Member>
    void read(const Place& place, Member& member) const
    {
        const uint64_t mac = read_number(place);
        if constexpr (std::is_same_v<Member, uint64_t>)
            member = mac;
        else
            for (size_t i = 0; i < mac_bytes; ++i)
                member[i] = static_cast<uint8_t>(mac >> 8 * (mac_bytes - 1 - i));
    }

    template <class Member>
    OrderedJson write(const Member& member) const
    {
        if constexpr (std::is_same_v<Member, uint64_t>) {
            return written(member);
        } else {
            uint64_t mac = 0;
            for (const uint8_t byte : member)
                mac = mac << 8 | byte;
            return written(mac);
        }
    }

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        return repeatable({{"type", "string"}, {"pattern", "^[0-9a-fA-F]{2}(:[0-9a-fA-F]{2}){5}$"}}, is_repeatable);
    }

    static uint64_t read_number(const Place& place);
    static std::string written(uint64_t mac);
};

// An IP address in network byte order; of IPv4 the first four bytes.
struct Ip {
    bool is_ipv6;
    IpAddress bytes;
};

struct IpKind {
    void read(const Place& place, Ip& member) const;
    OrderedJson write(const Ip& member) const;

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        return repeatable({{"type", "string"}, {"pattern", "[.:]"}}, is_repeatable);
    }
};

}  // namespace host::scenario
