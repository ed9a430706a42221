// The kinds of values in a scenario, as far as they are no templates.
#include "host/scenario/composed.h"

#include <arpa/inet.h>

#include <algorithm>

namespace host::scenario {

namespace {

uint64_t highest_in(size_t bytes)
{
    return bytes < sizeof(uint64_t) ? (uint64_t{1} << 8 * bytes) - 1 : UINT64_MAX;
}

int digit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// "{5}" is 5 and the number of the turn.
std::string in_turn(const std::string& pattern, uint64_t turn)
{
    std::string made;
    for (size_t i = 0; i < pattern.size();) {
        size_t end = i + 1;
        uint64_t number = 0;
        while (pattern[i] == '{' && end < pattern.size() && pattern[end] >= '0' && pattern[end] <= '9')
            number = number * 10 + static_cast<uint64_t>(pattern[end++] - '0');
        if (end > i + 1 && end < pattern.size() && pattern[end] == '}') {
            made += std::to_string(number + turn);
            i = end + 1;
        } else {
            made += pattern[i++];
        }
    }
    return made;
}

// Null when there is no text.
const std::string* text_of(const Json* json)
{
    return json ? json->get_ptr<const std::string*>() : nullptr;
}

std::string listed(std::span<const Name> names)
{
    std::string made;
    for (const Name& name : names)
        made += '"' + std::string{name.name} + "\", ";
    return made;
}

}  // namespace

OrderedJson repeatable(OrderedJson schema, bool is_repeatable)
{
    if (!is_repeatable)
        return schema;
    return {{"anyOf", {std::move(schema), {{"$ref", "#/$defs/takesTurns"}}}}};
}

// --- Names ---

uint64_t OneOf::read_number(const Place& place, size_t bytes) const
{
    if (place.json && place.json->is_string())
        for (const Name& name : names)
            if (*place.json == name.name)
                return name.value;
    uint64_t value = 0;
    if (const Json* counted = place.counted().json; counted && counted->is_number_unsigned())
        number(0, highest_in(bytes)).read(place, value);
    else
        place.fail("one of " + listed(names) + "or a number");
    return value;
}

OrderedJson OneOf::written(uint64_t value) const
{
    for (const Name& name : names)
        if (name.value == value)
            return name.name;
    return value;
}

OrderedJson OneOf::named_schema() const
{
    OrderedJson all = OrderedJson::array();
    for (const Name& name : names)
        all.push_back(name.name);
    return {{"anyOf", {{{"enum", all}}, {{"type", "integer"}, {"minimum", 0}}}}};
}

uint64_t Bits::read_bits(const Place& place, size_t bytes) const
{
    if (!place.json || !place.json->is_array())
        place.fail("a list of: " + listed(names) + "or numbers");
    uint64_t bits = 0;
    for (size_t i = 0; i < place.json->size(); ++i)
        bits |= OneOf{names}.read_number(place.child(i, &(*place.json)[i]), bytes);
    return bits;
}

OrderedJson Bits::written(uint64_t bits) const
{
    OrderedJson made = OrderedJson::array();
    for (const Name& name : names)
        if ((bits & name.value) == name.value) {
            made.push_back(name.name);
            bits &= ~name.value;
        }
    if (bits)
        made.push_back(bits);
    return made;
}

// --- Texts ---

std::string Text::read_text(const Place& place, size_t most) const
{
    const std::string* text = text_of(place.json);
    std::string made = text ? place.turn ? in_turn(*text, *place.turn) : *text : std::string{};
    if (!text || made.size() < shortest || made.size() > most || made.find('\0') != std::string::npos)
        place.fail("a text of " + std::to_string(shortest) + " to " + std::to_string(most) + " bytes");
    return made;
}

void Hex::read(const Place& place, Value& member) const
{
    const std::string* text = text_of(place.json);
    if (!text)
        place.fail("hexadecimal digits, two a byte");
    std::string digits = *text;
    std::erase(digits, ' ');
    if (digits.size() % 2 || std::ranges::any_of(digits, [](char character) { return digit(character) < 0; }))
        place.fail("hexadecimal digits, two a byte");
    member.clear();
    for (size_t i = 0; i < digits.size(); i += 2)
        member.push_back(static_cast<std::byte>(digit(digits[i]) << 4 | digit(digits[i + 1])));
}

OrderedJson Hex::write(const Value& member) const
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string made;
    for (const std::byte byte : member) {
        made += digits[std::to_integer<unsigned>(byte) >> 4];
        made += digits[std::to_integer<unsigned>(byte) & 15];
    }
    return made;
}

void PropertyKind::read(const Place& place, Value& member) const
{
    if (!place.json || (!place.json->is_string() && !place.json->is_object()))
        place.fail("a text, or bytes as {\"hex\": digits}");
    if (place.json->is_string())
        member = value_of(std::string_view{place.json->get_ref<const std::string&>()});
    else
        object([](auto& v, Value& value) { v.required("hex", value, Hex{}, ""); }).read(place, member);
}

// A text as it would be read back; anything else as bytes.
OrderedJson PropertyKind::write(const Value& member) const
{
    const bool is_text = !member.empty() && member.back() == std::byte{0} &&
                         std::ranges::all_of(std::span{member}.first(member.size() - 1), [](std::byte byte) {
                             return byte >= std::byte{' '} && byte < std::byte{0x7f};
                         });
    if (!is_text)
        return {{"hex", Hex{}.write(member)}};
    return std::string{reinterpret_cast<const char*>(member.data()), member.size() - 1};
}

void PropertiesKind::read(const Place& place, Properties& member) const
{
    if (!place.json || !place.json->is_object())
        place.fail("an object of properties");
    member.clear();
    for (const auto& [key, value] : place.json->items())
        PropertyKind{}.read(place.child(key.c_str(), &value), member[key]);
}

OrderedJson PropertiesKind::write(const Properties& member) const
{
    OrderedJson made = OrderedJson::object();
    for (const auto& [key, value] : member)
        made[key] = PropertyKind{}.write(value);
    return made;
}

// --- Addresses ---

uint64_t Mac48::read_number(const Place& place)
{
    constexpr size_t length = 17;
    const auto [json, added] = place.counted();
    const std::string* text = text_of(json);
    uint64_t mac = 0;
    bool is_mac = text && text->size() == length;
    for (size_t i = 0; is_mac && i < length; ++i) {
        if (i % 3 == 2)
            is_mac = (*text)[i] == ':';
        else if (digit((*text)[i]) < 0)
            is_mac = false;
        else
            mac = mac << 4 | static_cast<uint64_t>(digit((*text)[i]));
    }
    mac += added;
    if (!is_mac || mac >> 48)
        place.fail("a MAC address such as \"02:10:00:00:00:01\"");
    return mac;
}

std::string Mac48::written(uint64_t mac)
{
    char made[18];
    std::snprintf(made, sizeof made, "%02x:%02x:%02x:%02x:%02x:%02x", static_cast<unsigned>(mac >> 40 & 0xff),
                  static_cast<unsigned>(mac >> 32 & 0xff), static_cast<unsigned>(mac >> 24 & 0xff),
                  static_cast<unsigned>(mac >> 16 & 0xff), static_cast<unsigned>(mac >> 8 & 0xff),
                  static_cast<unsigned>(mac & 0xff));
    return made;
}

// Addresses are counted up in their last four bytes.
void IpKind::read(const Place& place, Ip& member) const
{
    const auto [json, added] = place.counted();
    const std::string* text = text_of(json);
    member = {};
    member.is_ipv6 = text && text->find(':') != std::string::npos;
    if (!text || inet_pton(member.is_ipv6 ? AF_INET6 : AF_INET, text->c_str(), member.bytes.data()) != 1)
        place.fail("an IP address such as \"10.0.0.1\" or \"2001:db8::1\"");
    uint8_t* last = member.bytes.data() + (member.is_ipv6 ? member.bytes.size() : 4) - 4;
    uint32_t number;
    std::memcpy(&number, last, sizeof number);
    number = htonl(ntohl(number) + static_cast<uint32_t>(added));
    std::memcpy(last, &number, sizeof number);
}

OrderedJson IpKind::write(const Ip& member) const
{
    char made[INET6_ADDRSTRLEN];
    return inet_ntop(member.is_ipv6 ? AF_INET6 : AF_INET, member.bytes.data(), made, sizeof made);
}

}  // namespace host::scenario
