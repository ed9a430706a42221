// The visitors of a description, which get every member of a struct with its key, its format and a sentence about it.
// One reads a struct from JSON, one writes it, one makes its JSON schema.
#pragma once

#include <array>

#include "host/scenario/node.h"

namespace host::scenario {

// Keys of every object, and of an entry that is repeated.
inline constexpr char comment_key[] = "comment";
inline constexpr char repeat_key[] = "repeat";
inline constexpr char turns_key[] = "turns";

// A description is a function of a visitor and a struct:
//
//     template <class V> void describe_traffic(V& v, Traffic& traffic)
//     {
//         v.required("packets", traffic.packets, number(), "a second");
//         v.optional("packetBytes", traffic.packet_bytes, number(64, 9216), "of each packet");
//     }
//
// A member without a key keeps its value: an optional one the struct's own default, or the one that a `defaults` before
// it sets, which the schema shows; a derived one what a `derive` before it computes from other members, which the
// sentence says. Members are visited in the same order always.
class Reader {
public:
    explicit Reader(const Node& node) : node_{node} {}

    template <class Member, class Format>
    void required(const char* key, Member& member, const Format& format, const char*)
    {
        format.read(member_at(key), member);
    }

    template <class Member, class Format>
    void optional(const char* key, Member& member, const Format& format, const char*)
    {
        if (const Node node = member_at(key); node.json)
            format.read(node, member);
    }

    template <class Member, class Format>
    void derived(const char* key, Member& member, const Format& format, const char* help)
    {
        optional(key, member, format, help);
    }

    // Members that only some structs have.
    template <class Description>
    void when(bool is_present, Description description)
    {
        if (is_present)
            description();
    }

    template <class Action>
    void defaults(Action action)
    {
        action();
    }

    // What follows from the members so far, while a struct is read.
    template <class Action>
    void derive(Action action)
    {
        action();
    }

    // What the members so far have to be, beyond their formats.
    void check(bool is_right, const char* key, const char* expected) const
    {
        if (!is_right)
            node_.child(key, find(key)).fail(expected);
    }

    // That no key is there that was not asked for.
    void finish() const;

private:
    const Json* find(const char* key) const;  // null when there is none
    Node member_at(const char* key);
    bool is_known(const std::string& key) const;
    void check_keys(const Json& object) const;

    const Node& node_;
    std::array<const char*, 64> keys_;
    size_t count_ = 0;
    size_t num_found_ = 0;
};

// Where a value is written to, and the value that it was read from: null when there is none.
struct Target {
    JsonText& text;
    const Json* source = nullptr;
};

class Writer {
public:
    explicit Writer(const Target& target) : target_{target} {}

    template <class Member, class Format>
    void required(const char* key, Member& member, const Format& format, const char*)
    {
        target_.text.key(key);
        format.write({target_.text, target_.source ? target_.source->find(key) : nullptr}, member);
    }

    template <class Member, class Format>
    void optional(const char* key, Member& member, const Format& format, const char* help)
    {
        required(key, member, format, help);
    }

    template <class Member, class Format>
    void derived(const char* key, Member& member, const Format& format, const char* help)
    {
        required(key, member, format, help);
    }

    template <class Description>
    void when(bool is_present, Description description)
    {
        if (is_present)
            description();
    }

    template <class Action>
    void defaults(Action)
    {
    }
    template <class Action>
    void derive(Action)
    {
    }
    void check(bool, const char*, const char*) const {}

private:
    const Target& target_;
};

class SchemaMaker {
public:
    explicit SchemaMaker(bool is_repeatable) : is_repeatable_{is_repeatable} {}

    template <class Member, class Format>
    void required(const char* key, Member&, const Format& format, const char* help)
    {
        required_.push_back(key);
        add(key, format.template schema<Member>(is_repeatable_), help, "");
    }

    template <class Member, class Format>
    void optional(const char* key, Member& member, const Format& format, const char* help)
    {
        JsonText text{false};
        format.write({text}, member);
        add(key, format.template schema<Member>(is_repeatable_), help, text.text);
    }

    template <class Member, class Format>
    void derived(const char* key, Member&, const Format& format, const char* help)
    {
        add(key, without_defaults(format.template schema<Member>(is_repeatable_)), help, "");
    }

    template <class Description>
    void when(bool, Description description)
    {
        description();
    }

    template <class Action>
    void defaults(Action action)
    {
        action();
    }

    template <class Action>
    void derive(Action)
    {
    }
    void check(bool, const char*, const char*) const {}

    // Of an object; of an entry, which may be repeated.
    Json schema(bool is_entry) const;

private:
    static Json without_defaults(const Json& schema);
    void add(const char* key, Json schema, const std::string& help, const std::string& default_text);

    bool is_repeatable_;
    Json::Object properties_;
    Json::Array required_;
};

}  // namespace host::scenario
