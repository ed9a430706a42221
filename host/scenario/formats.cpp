// The formats of values in a scenario that are no templates.
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
    std::string result;
    for (size_t i = 0; i < pattern.size();) {
        size_t end = i + 1;
        uint64_t number = 0;
        while (pattern[i] == '{' && end < pattern.size() && pattern[end] >= '0' && pattern[end] <= '9')
            number = number * 10 + static_cast<uint64_t>(pattern[end++] - '0');
        if (end > i + 1 && end < pattern.size() && pattern[end] == '}') {
            result += std::to_string(number + turn);
            i = end + 1;
        } else {
            result += pattern[i++];
        }
    }
    return result;
}

std::string listed(std::span<const NamedValue> names)
{
    std::string result;
    for (const NamedValue& name : names)
        result += '"' + std::string{name.name} + "\", ";
    return result;
}

const auto hex_object = object_format([](auto& v, auto& value) { v.required("hex", value, Hex{}, ""); });

}  // namespace

Json repeatable(Json schema, bool is_repeatable)
{
    if (!is_repeatable)
        return schema;
    return Json::object({{"anyOf", Json::list({std::move(schema), Json::object({{"$ref", "#/$defs/takesTurns"}})})}});
}

// --- Names ---

uint64_t OneOf::read_number(const Node& node, size_t bytes) const
{
    if (const std::string* text = node.text())
        for (const NamedValue& name : names)
            if (*text == name.name)
                return name.value;
    uint64_t value = 0;
    if (const Json* json = node.turn_value().json; json && json->natural())
        number(0, highest_in(bytes)).read(node, value);
    else
        node.fail("one of " + listed(names) + "or a number");
    return value;
}

Json OneOf::json_of(uint64_t value) const
{
    for (const NamedValue& name : names)
        if (name.value == value)
            return name.name;
    return value;
}

Json OneOf::named_schema() const
{
    Json::Array all;
    for (const NamedValue& name : names)
        all.push_back(name.name);
    return Json::object(
        {{"anyOf", Json::list({Json::object({{"enum", all}}), Json::object({{"type", "integer"}, {"minimum", 0}})})}});
}

uint64_t Bits::read_bits(const Node& node, size_t bytes) const
{
    const Json::Array* items = node.array();
    if (!items)
        node.fail("a list of: " + listed(names) + "or numbers");
    uint64_t bits = 0;
    for (size_t i = 0; i < items->size(); ++i)
        bits |= OneOf{names}.read_number(node.child(i, &(*items)[i]), bytes);
    return bits;
}

Json Bits::json_of(uint64_t bits) const
{
    Json::Array result;
    for (const NamedValue& name : names)
        if ((bits & name.value) == name.value) {
            result.push_back(name.name);
            bits &= ~name.value;
        }
    if (bits)
        result.push_back(bits);
    return result;
}

// --- Texts ---

std::string Text::read_text(const Node& node, size_t max_bytes) const
{
    const std::string* text = node.text();
    std::string result = text ? node.turn ? in_turn(*text, *node.turn) : *text : std::string{};
    if (!text || result.size() < shortest || result.size() > max_bytes || result.find('\0') != std::string::npos)
        node.fail("a text of " + std::to_string(shortest) + " to " + std::to_string(max_bytes) + " bytes");
    return result;
}

void Hex::read(const Node& node, Value& member) const
{
    const std::string* text = node.text();
    if (!text)
        node.fail("hexadecimal digits, two a byte");
    std::string digits = *text;
    std::erase(digits, ' ');
    if (digits.size() % 2 || std::ranges::any_of(digits, [](char character) { return digit(character) < 0; }))
        node.fail("hexadecimal digits, two a byte");
    member.clear();
    for (size_t i = 0; i < digits.size(); i += 2)
        member.push_back(static_cast<std::byte>(digit(digits[i]) << 4 | digit(digits[i + 1])));
}

void Hex::write(const Target& target, const Value& member) const
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string result;
    for (const std::byte byte : member) {
        result += digits[std::to_integer<unsigned>(byte) >> 4];
        result += digits[std::to_integer<unsigned>(byte) & 15];
    }
    target.text.value(result);
}

void PropertyFormat::read(const Node& node, Value& member) const
{
    if (const std::string* text = node.text())
        member = value_of(std::string_view{*text});
    else if (node.object())
        hex_object.read(node, member);
    else
        node.fail("a text, or bytes as {\"hex\": digits}");
}

// A text as it would be read back; anything else as bytes.
void PropertyFormat::write(const Target& target, const Value& member) const
{
    const bool is_text = !member.empty() && member.back() == std::byte{0} &&
                         std::ranges::all_of(std::span{member}.first(member.size() - 1), [](std::byte byte) {
                             return byte >= std::byte{' '} && byte < std::byte{0x7f};
                         });
    if (is_text)
        target.text.value(std::string{reinterpret_cast<const char*>(member.data()), member.size() - 1});
    else
        hex_object.write(target, member);
}

void PropertiesFormat::read(const Node& node, Properties& member) const
{
    if (!node.object())
        node.fail("an object of properties");
    member.clear();
    for (const auto& [key, value] : *node.object())
        PropertyFormat{}.read(node.child(key.c_str(), &value), member[key]);
}

void PropertiesFormat::write(const Target& target, const Properties& member) const
{
    target.text.begin_object();
    for (const auto& [key, value] : member) {
        target.text.key(key);
        PropertyFormat{}.write(target, value);
    }
    target.text.end_object();
}

// --- Addresses ---

uint64_t MacFormat::read_number(const Node& node)
{
    constexpr size_t length = 17;
    const auto [json, increment] = node.turn_value();
    const std::string* text = json ? json->text() : nullptr;
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
    mac += increment;
    if (!is_mac || mac >> 48)
        node.fail("a MAC address such as \"02:10:00:00:00:01\"");
    return mac;
}

std::string MacFormat::text_of(uint64_t mac)
{
    char result[18];
    std::snprintf(result, sizeof result, "%02x:%02x:%02x:%02x:%02x:%02x", static_cast<unsigned>(mac >> 40 & 0xff),
                  static_cast<unsigned>(mac >> 32 & 0xff), static_cast<unsigned>(mac >> 24 & 0xff),
                  static_cast<unsigned>(mac >> 16 & 0xff), static_cast<unsigned>(mac >> 8 & 0xff),
                  static_cast<unsigned>(mac & 0xff));
    return result;
}

// Addresses are counted up in their last four bytes.
void IpFormat::read(const Node& node, Ip& member) const
{
    const auto [json, increment] = node.turn_value();
    const std::string* text = json ? json->text() : nullptr;
    member = {};
    member.is_ipv6 = text && text->find(':') != std::string::npos;
    if (!text || inet_pton(member.is_ipv6 ? AF_INET6 : AF_INET, text->c_str(), member.bytes.data()) != 1)
        node.fail("an IP address such as \"10.0.0.1\" or \"2001:db8::1\"");
    uint8_t* last = member.bytes.data() + (member.is_ipv6 ? member.bytes.size() : 4) - 4;
    uint32_t number;
    std::memcpy(&number, last, sizeof number);
    number = htonl(ntohl(number) + static_cast<uint32_t>(increment));
    std::memcpy(last, &number, sizeof number);
}

void IpFormat::write(const Target& target, const Ip& member) const
{
    char result[INET6_ADDRSTRLEN];
    target.text.value(inet_ntop(member.is_ipv6 ? AF_INET6 : AF_INET, member.bytes.data(), result, sizeof result));
}

}  // namespace host::scenario
