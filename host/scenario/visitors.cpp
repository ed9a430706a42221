// What the visitors of a description do with the keys of an object.
#include "host/scenario/visitors.h"

#include <algorithm>

namespace host::scenario {

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

}  // namespace host::scenario
