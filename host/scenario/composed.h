// The kinds of values in a scenario that are made of others: objects, lists and their entries, what may be absent.
#pragma once

#include <set>

#include "host/scenario/kinds.h"

namespace host::scenario {

template <class Description>
struct Object {
    Description description;

    template <class Member>
    void read(const Place& place, Member& member) const
    {
        if (!place.json || !place.json->is_object())
            place.fail("an object");
        Reader reader{place};
        description(reader, member);
        reader.finish();
    }

    template <class Member>
    OrderedJson write(const Member& member) const
    {
        Writer writer;
        description(writer, const_cast<Member&>(member));  // which only looks at it
        return writer.object;
    }

    template <class Member>
    OrderedJson schema(bool is_repeatable, bool is_entry = false) const
    {
        SchemaMaker maker{is_repeatable};
        Member member{};
        description(maker, member);
        return maker.schema(is_entry);
    }
};

// Of a function of a visitor and a struct.
template <class Description>
Object<Description> object(Description description)
{
    return {description};
}

template <class Kind>
struct Maybe {
    Kind kind;

    template <class Member>
    void read(const Place& place, std::optional<Member>& member) const
    {
        kind.read(place, member.emplace());
    }

    template <class Member>
    OrderedJson write(const std::optional<Member>& member) const
    {
        return member ? kind.write(*member) : OrderedJson{};
    }

    template <class Member>
    OrderedJson schema(bool is_repeatable) const
    {
        return kind.template schema<typename Member::value_type>(is_repeatable);
    }
};

template <class Kind>
Maybe<Kind> maybe(Kind kind)
{
    return {kind};
}

// What no two entries of a list share.
struct NothingUnique {
    static constexpr const char* name = nullptr;
};

template <class KeyOf>
struct Unique {
    const char* name;
    KeyOf key_of;
};

template <class Kind, class Distinct>
struct List {
    Kind kind;
    size_t most;
    Distinct distinct;

    template <class Members>
    void read(const Place& place, Members& members) const
    {
        if (!place.json || !place.json->is_array())
            place.fail("a list");
        members.clear();
        auto known = known_keys<typename Members::value_type>();
        for (size_t i = 0; i < place.json->size(); ++i)
            read_entry(place, i, members, known);
    }

    template <class Members>
    OrderedJson write(const Members& members) const
    {
        OrderedJson made = OrderedJson::array();
        for (const auto& member : members)
            made.push_back(kind.write(member));
        return made;
    }

    template <class Members>
    OrderedJson schema(bool is_repeatable) const
    {
        using Member = typename Members::value_type;
        OrderedJson items;
        if constexpr (requires { kind.template schema<Member>(true, true); })
            items = kind.template schema<Member>(true, true);
        else
            items = kind.template schema<Member>(is_repeatable);
        return repeatable({{"type", "array"}, {"items", items}}, is_repeatable);
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
    void read_entry(const Place& list, size_t index, Members& members, Known& known) const
    {
        const Json& json = (*list.json)[index];
        Place place = list.child(index, &json);
        if (place.json != &json || !json.is_object() || !json.contains("repeat"))
            return add(list, place, members, known);

        uint64_t times;
        number(1, most - members.size()).read(place.child("repeat", &json["repeat"]), times);
        const auto turns = json.find("turns");
        if (turns != json.end())
            check_turns(place.child("turns", &*turns));
        for (uint64_t turn = 0; turn < times; ++turn) {
            place.turn = turn;
            place.is_entry = true;
            if (turns != json.end())
                place.own = &(*turns)[turn % turns->size()];
            add(list, place, members, known);
        }
    }

    static void check_turns(const Place& turns)
    {
        if (!turns.json->is_array() || turns.json->empty())
            turns.fail("a list of the members that turns have of their own");
        for (size_t i = 0; i < turns.json->size(); ++i)
            if (!(*turns.json)[i].is_object())
                turns.child(i, &(*turns.json)[i]).fail("an object");
    }

    template <class Members, class Known>
    void add(const Place& list, const Place& place, Members& members, Known& known) const
    {
        if (members.size() >= most)
            list.fail("at most " + std::to_string(most) + " entries");
        typename Members::value_type member{};
        kind.read(place, member);
        if constexpr (!std::is_same_v<Distinct, NothingUnique>)
            if (!known.insert(distinct.key_of(member)).second)
                place.fail(std::string{"an entry whose "} + distinct.name + " no other entry has");
        members.push_back(std::move(member));
    }
};

template <class Kind>
List<Kind, NothingUnique> list(Kind kind, size_t most)
{
    return {kind, most, {}};
}

// Of entries of which no two have the same key: `name` says what it is.
template <class Kind, class KeyOf>
List<Kind, Unique<KeyOf>> list(Kind kind, size_t most, const char* name, KeyOf key_of)
{
    return {kind, most, {name, key_of}};
}

// Whatever stands there.
struct AnyValue {
    void read(const Place& place, const Json*& member) const
    {
        if (!place.json)
            place.fail("a value");
        member = place.json;
    }
    OrderedJson write(const Json* member) const { return *member; }

    template <class Member>
    OrderedJson schema(bool) const
    {
        return OrderedJson::object();
    }
};

template <class V>
void describe_steps(V& v, Steps& steps)
{
    v.required("from", steps.from, AnyValue{}, "The value of the first turn.");
    v.optional("step", steps.step, number(0), "What is added from one turn to the next.");
    v.optional("every", steps.every, number(1), "How many turns in a row have the same value.");
    v.optional("offset", steps.offset, number(0), "What is added to the first step.");
    v.optional("modulo", steps.modulo, number(1), "Where the steps begin again.");
}

}  // namespace host::scenario
