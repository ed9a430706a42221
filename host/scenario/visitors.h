// What a description is read with: a visitor that gets every member of a struct with its key, its kind and a sentence
// about it. One reads a struct from JSON, one writes it, one makes the JSON schema.
#pragma once

#include <array>

#include "host/scenario/place.h"

namespace host::scenario {

// A description is a function of a visitor and a struct:
//
//     template <class V> void describe_traffic(V& v, Traffic& traffic)
//     {
//         v.required("packets", traffic.packets, number(), "a second");
//         v.optional("packetBytes", traffic.packet_bytes, number(64, 9216), "of each packet");
//     }
//
// An optional member without a key keeps what it has: its default, or what a derive before it gave it. Members are
// visited in the same order always.
class Reader {
public:
    explicit Reader(const Place& place) : place_{place} {}

    template <class Member, class Kind>
    void required(const char* key, Member& member, const Kind& kind, const char*)
    {
        kind.read(member_at(key), member);
    }

    template <class Member, class Kind>
    void optional(const char* key, Member& member, const Kind& kind, const char*)
    {
        if (const Place place = member_at(key); place.json)
            kind.read(place, member);
    }

    // What follows from the members so far, while a struct is read.
    template <class Action>
    void derive(Action action)
    {
        action();
    }

    // What the members so far have to be, beyond their kinds.
    void check(bool is_right, const char* key, const char* expected) const
    {
        if (!is_right)
            place_.child(key, found(key)).fail(expected);
    }

    // That no key is there that was not asked for.
    void finish() const;

private:
    const Json* found(const char* key) const;  // null when there is none
    Place member_at(const char* key);
    bool is_known(const std::string& key) const;
    void check_keys(const Json& object) const;

    const Place& place_;
    std::array<const char*, 64> keys_;
    size_t count_ = 0;
    size_t num_found_ = 0;
};

class Writer {
public:
    template <class Member, class Kind>
    void required(const char* key, Member& member, const Kind& kind, const char*)
    {
        OrderedJson value = kind.write(member);
        if (!value.is_null())
            object[key] = std::move(value);
    }

    template <class Member, class Kind>
    void optional(const char* key, Member& member, const Kind& kind, const char* help)
    {
        required(key, member, kind, help);
    }

    template <class Action>
    void derive(Action)
    {
    }
    void check(bool, const char*, const char*) const {}

    OrderedJson object = OrderedJson::object();
};

class SchemaMaker {
public:
    explicit SchemaMaker(bool is_repeatable) : is_repeatable_{is_repeatable} {}

    template <class Member, class Kind>
    void required(const char* key, Member& member, const Kind& kind, const char* help)
    {
        required_.push_back(key);
        optional(key, member, kind, help);
    }

    template <class Member, class Kind>
    void optional(const char* key, Member&, const Kind& kind, const char* help)
    {
        OrderedJson schema = kind.template schema<Member>(is_repeatable_);
        if (*help)
            schema["description"] = help;
        properties_[key] = std::move(schema);
    }

    template <class Action>
    void derive(Action)
    {
    }
    void check(bool, const char*, const char*) const {}

    // Of an object; of an entry, which may be repeated.
    OrderedJson schema(bool is_entry) const;

private:
    bool is_repeatable_;
    OrderedJson properties_ = OrderedJson::object();
    OrderedJson required_ = OrderedJson::array();
};

}  // namespace host::scenario
