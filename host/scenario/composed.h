// The formats of values in a scenario that are made of others: objects, lists and their entries, optional values.
#pragma once

#include <algorithm>
#include <set>

#include "host/scenario/formats.h"

namespace host::scenario {

template <class Description>
struct Object {
    Description description;

    template <class Member>
    void read(const Node& node, Member& member) const
    {
        if (!node.object())
            node.fail("an object");
        Reader reader{node};
        description(reader, member);
        reader.finish();
    }

    template <class Member>
    void write(const Target& target, Member& member) const
    {
        target.text.begin_object();
        Writer writer{target};
        description(writer, member);
        target.text.end_object();
    }

    template <class Member>
    Json schema(bool is_repeatable, bool is_entry = false) const
    {
        SchemaMaker maker{is_repeatable};
        std::remove_const_t<Member> member{};
        description(maker, member);
        return maker.schema(is_entry);
    }
};

// Of a function of a visitor and a struct.
template <class Description>
constexpr Object<Description> object_format(Description description)
{
    return {description};
}

template <class Format>
struct Optional {
    Format format;

    template <class Member>
    void read(const Node& node, std::optional<Member>& member) const
    {
        format.read(node, member.emplace());
    }

    template <class Member>
    void write(const Target& target, std::optional<Member>& member) const
    {
        if (member)
            format.write(target, *member);
    }

    template <class Member>
    Json schema(bool is_repeatable) const
    {
        return format.template schema<typename Member::value_type>(is_repeatable);
    }
};

template <class Format>
Optional<Format> optional_format(Format format)
{
    return {format};
}

// --- Lists ---

// Whether a list of a scenario is written as it was read because its repeated entries stand for very many.
bool stays_repeated(const Json::Array& list);

// How a message names what two entries have in common.
std::string display_text(const std::string& text);
std::string display_text(uint64_t number);

// What all entries of a list differ in.
struct NothingUnique {
    static constexpr const char* name = nullptr;
};

template <class KeyOf>
struct Unique {
    const char* name;
    KeyOf key_of;
};

template <class Format, class Distinct>
struct List {
    Format format;
    size_t max_entries;
    Distinct distinct;

    template <class Members>
    void read(const Node& node, Members& members) const
    {
        if (!node.array())
            node.fail("a list");
        members.clear();
        if constexpr (requires { members.will_read(*node.array()); })
            members.will_read(*node.array());
        auto known = known_keys<typename Members::value_type>();
        for (size_t i = 0; i < node.array()->size(); ++i)
            read_entry(node, i, members, known);
    }

    template <class Members>
    void write(const Target& target, Members& members) const
    {
        const Json::Array* source = target.source ? target.source->array() : nullptr;
        if (source && stays_repeated(*source))
            return target.text.value(*target.source);
        if (source && source->size() != members.size())
            source = nullptr;
        target.text.begin_array();
        size_t index = 0;
        for (auto&& member : members) {
            format.write({target.text, source ? &(*source)[index] : nullptr}, member);
            ++index;
        }
        target.text.end_array();
    }

    template <class Members>
    Json schema(bool is_repeatable) const
    {
        using Member = typename Members::value_type;
        Json items;
        if constexpr (requires { format.template schema<Member>(true, true); })
            items = format.template schema<Member>(true, true);
        else
            items = format.template schema<Member>(is_repeatable);
        return repeatable(Json::object({{"type", "array"}, {"items", items}}), is_repeatable);
    }

private:
    template <class Member>
    auto known_keys() const
    {
        if constexpr (std::is_same_v<Distinct, NothingUnique>)
            return 0;
        else
            return std::set<std::decay_t<decltype(distinct.key_of(std::declval<const Member&>()))>>{};
    }

    // An entry, or all turns of one that is repeated.
    template <class Members, class Known>
    void read_entry(const Node& list, size_t index, Members& members, Known& known) const
    {
        const Json& json = (*list.array())[index];
        Node node = list.child(index, &json);
        const Json* repeat = json.find("repeat");
        if (node.json != &json || !repeat)
            return add(list, node, members, known);

        uint64_t times;
        number(1, max_entries - members.size()).read(node.child("repeat", repeat), times);
        const Json* turns = json.find("turns");
        if (turns)
            check_turns(node.child("turns", turns));
        for (uint64_t turn = 0; turn < times; ++turn) {
            node.turn = turn;
            node.is_entry = true;
            if (turns)
                node.own = &(*turns->array())[turn % turns->array()->size()];
            add(list, node, members, known);
        }
    }

    static void check_turns(const Node& turns)
    {
        if (!turns.array() || turns.array()->empty())
            turns.fail("a list of the members that turns have of their own");
        for (size_t i = 0; i < turns.array()->size(); ++i)
            if (const Json& own = (*turns.array())[i]; !own.object())
                turns.child(i, &own).fail("an object");
    }

    template <class Members, class Known>
    void add(const Node& list, const Node& node, Members& members, Known& known) const
    {
        if (members.size() >= max_entries)
            list.fail("at most " + std::to_string(max_entries) + " entries");
        typename Members::value_type member{};
        format.read(node, member);
        if constexpr (!std::is_same_v<Distinct, NothingUnique>)
            if (const auto [key, is_new] = known.insert(distinct.key_of(member)); !is_new)
                node.fail(std::string{"an entry whose "} + distinct.name + " no other entry has",
                          std::string{"the "} + distinct.name + " " + display_text(*key) + " again");
        members.push_back(std::move(member));
    }
};

template <class Format>
List<Format, NothingUnique> list(Format format, size_t max_entries)
{
    return {format, max_entries, {}};
}

// Of entries of which no two have the same key: `name` says what it is.
template <class Format, class KeyOf>
List<Format, Unique<KeyOf>> list(Format format, size_t max_entries, const char* name, KeyOf key_of)
{
    return {format, max_entries, {name, key_of}};
}

// A list that a record keeps as an array and the number of its elements that count.
template <class V, class Element, size_t size, class Count>
void describe_counted(V& v, const char* key, Element (&array)[size], Count& count, const char* help)
{
    std::vector<Element> elements(array, array + std::min<size_t>(count, size));
    v.optional(key, elements, list(number(), size), help);
    v.derive([&] {
        count = static_cast<Count>(elements.size());
        std::fill(std::begin(array), std::end(array), Element{});
        std::copy(elements.begin(), elements.end(), array);
    });
}

// --- Series ---

// Whatever stands there.
struct AnyValue {
    void read(const Node& node, const Json*& member) const
    {
        if (!node.json)
            node.fail("a value");
        member = node.json;
    }
    void write(const Target& target, const Json* member) const { target.text.value(*member); }

    template <class Member>
    Json schema(bool) const
    {
        return Json::object({});
    }
};

template <class V>
void describe_series(V& v, Series& series)
{
    v.required("from", series.from, AnyValue{}, "The value of the first turn.");
    v.optional("step", series.step, number(0), "What is added from one turn to the next.");
    v.optional("every", series.every, number(1), "How many turns in a row have the same value.");
    v.optional("offset", series.offset, number(0), "What is added to the first step.");
    v.derived("modulo", series.modulo, number(1), "Where the steps begin again. Absent: nowhere.");
}

}  // namespace host::scenario
