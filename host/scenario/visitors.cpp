// What the visitors of a description do with the keys of an object.
#include "host/scenario/visitors.h"

#include <algorithm>

namespace host::scenario {

namespace {

// Keys of every object, and of an entry that is repeated.
constexpr char comment_key[] = "comment";
constexpr char repeat_key[] = "repeat";
constexpr char turns_key[] = "turns";

Json reference(const char* definition)
{
    return Json::object({{"$ref", std::string{"#/$defs/"} + definition}});
}

}  // namespace

const Json* Reader::find(const char* key) const
{
    if (node_.own)
        if (const Json* member = node_.own->find(key))
            return member;
    return node_.json->find(key);
}

Node Reader::member_at(const char* key)
{
    keys_.at(count_++) = key;
    const Json* member = find(key);
    num_found_ += member != nullptr;
    return node_.child(key, member);
}

bool Reader::is_known(const std::string& key) const
{
    const bool is_of_entry = node_.is_entry && (key == repeat_key || key == turns_key);
    return is_of_entry || key == comment_key ||
           std::any_of(keys_.begin(), keys_.begin() + count_, [&](const char* known) { return key == known; });
}

void Reader::check_keys(const Json& object) const
{
    for (const auto& [key, value] : *object.object()) {
        if (is_known(key))
            continue;
        std::string known;
        for (size_t i = 0; i < count_; ++i)
            known += (i ? ", " : "") + std::string{keys_[i]};
        node_.child(key.c_str(), nullptr).fail("one of the keys " + known, "an unknown key");
    }
}

// The members that all turns of a repeated entry share are checked in the first turn alone.
void Reader::finish() const
{
    if (!node_.is_entry) {
        if (num_found_ != node_.object()->size())
            check_keys(*node_.json);
        return;
    }
    if (*node_.turn == 0)
        check_keys(*node_.json);
    if (node_.own && *node_.turn < node_.json->find(turns_key)->array()->size())
        check_keys(*node_.own);
}

// What the members of a derived struct are when they are absent, the struct's derivation says.
Json SchemaMaker::without_defaults(const Json& schema)
{
    if (schema.array()) {
        Json result = Json::list({});
        for (const Json& item : *schema.array())
            result.add(without_defaults(item));
        return result;
    }
    if (!schema.object())
        return schema;
    Json result = Json::object({});
    for (const auto& [key, value] : *schema.object())
        if (key != "default")
            result.append(key, without_defaults(value));
    return result;
}

// An object has no default of its own: its members have theirs.
void SchemaMaker::add(const char* key, Json schema, const std::string& help, const std::string& default_text)
{
    if (!help.empty())
        schema.append("description", help);
    if (!default_text.empty())
        if (Json value = Json::parsed(default_text); !value.object())
            schema.append("default", std::move(value));
    properties_.emplace_back(key, std::move(schema));
}

Json SchemaMaker::schema(bool is_entry) const
{
    Json::Object properties = properties_;
    properties.emplace_back(comment_key, reference("comment"));
    if (is_entry) {
        properties.emplace_back(repeat_key, reference("repeat"));
        properties.emplace_back(turns_key, reference("turns"));
    }
    Json result = Json::object({{"type", "object"}, {"properties", properties}, {"additionalProperties", false}});
    if (required_.empty())
        return result;
    if (is_entry)
        result.append("anyOf", Json::list({Json::object({{"required", required_}}),
                                           Json::object({{"required", Json::list({turns_key})}})}));
    else
        result.append("required", required_);
    return result;
}

}  // namespace host::scenario
