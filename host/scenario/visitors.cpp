// What the visitors of a description do with the keys of an object.
#include "host/scenario/visitors.h"

#include <algorithm>
#include <string_view>

namespace host::scenario {

namespace {

// Keys of every object, of an entry that is repeated, and what the schema says of them.
constexpr char comment_key[] = "comment";
constexpr char repeat_key[] = "repeat";
constexpr char turns_key[] = "turns";

}  // namespace

const Json* Reader::found(const char* key) const
{
    if (place_.own)
        if (const auto member = place_.own->find(key); member != place_.own->end())
            return &*member;
    const auto member = place_.json->find(key);
    return member == place_.json->end() ? nullptr : &*member;
}

Place Reader::member_at(const char* key)
{
    keys_.at(count_++) = key;
    const Json* member = found(key);
    num_found_ += member != nullptr;
    return place_.child(key, member);
}

bool Reader::is_known(const std::string& key) const
{
    const bool is_of_entry = place_.is_entry && (key == repeat_key || key == turns_key);
    return is_of_entry || key == comment_key ||
           std::any_of(keys_.begin(), keys_.begin() + count_, [&](const char* known) { return key == known; });
}

void Reader::check_keys(const Json& object) const
{
    for (const auto& [key, value] : object.items()) {
        if (is_known(key))
            continue;
        std::string known;
        for (size_t i = 0; i < count_; ++i)
            known += (i ? ", " : "") + std::string{keys_[i]};
        throw Error(place_.child(key.c_str(), nullptr).pointer() + ": expected one of the keys " + known +
                    ", found an unknown key");
    }
}

// What a repeated entry is made of needs one look only, not one a turn.
void Reader::finish() const
{
    if (!place_.is_entry) {
        if (num_found_ != place_.json->size())
            check_keys(*place_.json);
        return;
    }
    if (*place_.turn == 0)
        check_keys(*place_.json);
    if (place_.own && *place_.turn < place_.json->find(turns_key)->size())
        check_keys(*place_.own);
}

OrderedJson SchemaMaker::schema(bool is_entry) const
{
    OrderedJson made{{"type", "object"}, {"properties", properties_}, {"additionalProperties", false}};
    made["properties"][comment_key] = {{"$ref", "#/$defs/comment"}};
    if (is_entry) {
        made["properties"][repeat_key] = {{"$ref", "#/$defs/repeat"}};
        made["properties"][turns_key] = {{"$ref", "#/$defs/turns"}};
    }
    if (required_.empty())
        return made;
    if (is_entry)
        made["anyOf"] = {{{"required", required_}}, {{"required", {turns_key}}}};
    else
        made["required"] = required_;
    return made;
}

}  // namespace host::scenario
