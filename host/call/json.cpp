// JSON values, read from a text and written to one. The JSON library is compiled here alone.
#include "host/call/json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <span>

namespace host {

namespace {

constexpr size_t max_levels = 64;
constexpr size_t max_named_levels = 8;

// What the parser read last may be anything.
std::string printable(const std::string& text)
{
    constexpr size_t longest = 200;
    std::string result = text.size() > longest ? text.substr(0, longest) + "..." : text;
    std::ranges::replace_if(
        result, [](char character) { return character < ' ' || character > '~'; }, '?');
    return result;
}

// Makes a Json of what the library's parser reports.
class Builder : public nlohmann::json_sax<nlohmann::json> {
public:
    explicit Builder(const std::string& text) : text_{text} {}

    bool null() override { return add({}); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(int64_t value) override { return add(value); }
    bool number_unsigned(uint64_t value) override { return add(value); }
    bool number_float(double value, const std::string&) override { return add(value); }
    bool string(std::string& value) override { return add(std::move(value)); }
    bool binary(nlohmann::json::binary_t&) override { return false; }  // which a text has not

    bool start_object(size_t) override { return open(Json::Object{}); }
    bool start_array(size_t) override { return open(Json::Array{}); }
    bool key(std::string& key) override
    {
        open_.back().key = std::move(key);
        return true;
    }
    bool end_object() override
    {
        refuse_doubled_keys(*open_.back().json.object());
        return close();
    }
    bool end_array() override { return close(); }

    bool parse_error(size_t end, const std::string& last, const nlohmann::detail::exception& error) override
    {
        if (dynamic_cast<const nlohmann::json::out_of_range*>(&error))
            throw InputError(pointer() + ": expected a smaller number, found " + printable(last));
        // The reason stands behind the library's own words about the place.
        const std::string message = error.what();
        const size_t reason = message.find(": ");
        throw InputError(position(end) + ": expected JSON, found a " +
                         printable(reason == std::string::npos ? message : message.substr(reason + 2)));
    }

    Json result;

private:
    struct Open {
        Json json;
        std::string key;  // of the member that is being read
    };

    bool add(Json value)
    {
        if (open_.empty())
            result = std::move(value);
        else if (open_.back().json.array())
            open_.back().json.add(std::move(value));
        else
            open_.back().json.append(std::move(open_.back().key), std::move(value));
        return true;
    }

    bool open(Json container)
    {
        if (open_.size() == max_levels)
            throw InputError(pointer(max_named_levels) + ": expected at most " + std::to_string(max_levels) +
                             " levels of objects and lists, found one more");
        open_.push_back({std::move(container), {}});
        return true;
    }

    bool close()
    {
        Json done = std::move(open_.back().json);
        open_.pop_back();
        return add(std::move(done));
    }

    void refuse_doubled_keys(const Json::Object& object)
    {
        std::vector<std::string_view> keys;
        for (const auto& [key, value] : object)
            keys.push_back(key);
        std::ranges::sort(keys);
        const auto doubled = std::ranges::adjacent_find(keys);
        if (doubled == keys.end())
            return;
        open_.back().key = *doubled;
        throw InputError(pointer() + ": expected each key once, found it again");
    }

    // Of the value that is being read, or of one so many levels deep around it.
    std::string pointer(size_t levels = max_levels) const
    {
        std::string made_pointer;
        for (const Open& each : std::span{open_}.first(std::min(levels, open_.size())))
            made_pointer += "/" + (each.json.array() ? std::to_string(each.json.array()->size()) : escaped(each.key));
        return made_pointer;
    }

    // "line 3, column 5", counted from 1, of the byte before which parsing stopped.
    std::string position(size_t end) const
    {
        const std::string_view before = std::string_view{text_}.substr(0, end > 0 ? end - 1 : 0);
        const auto line = std::ranges::count(before, '\n') + 1;
        const size_t column = before.size() - (before.rfind('\n') + 1) + 1;
        return "line " + std::to_string(line) + ", column " + std::to_string(column);
    }

    const std::string& text_;
    std::vector<Open> open_;
};

// A text in its quotes; what is no UTF-8 in it is replaced.
std::string in_quotes(const std::string& text)
{
    return nlohmann::json(text).dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

std::string scalar_text(const Json& json)
{
    if (const bool* value = json.boolean())
        return *value ? "true" : "false";
    if (const uint64_t* value = json.natural())
        return std::to_string(*value);
    if (const int64_t* value = json.negative())
        return std::to_string(*value);
    if (const double* value = json.fraction())
        return nlohmann::json(*value).dump();
    if (const std::string* value = json.text())
        return in_quotes(*value);
    return "null";
}

}  // namespace

bool is_utf8(std::string_view text)
{
    try {
        static_cast<void>(nlohmann::json(text).dump());
        return true;
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

std::string escaped(const std::string& key)
{
    std::string result;
    for (const char character : key)
        if (character == '~' || character == '/')
            result += character == '~' ? "~0" : "~1";
        else
            result += character;
    return result;
}

Json::Json() = default;
Json::Json(const Json& other) = default;
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(const Json& other) = default;
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;

Json::Json(bool value) : value_{value} {}
Json::Json(double value) : value_{value} {}
Json::Json(const char* value) : value_{std::string{value}} {}
Json::Json(std::string_view value) : value_{std::string{value}} {}
Json::Json(std::string value) : value_{std::move(value)} {}
Json::Json(Array value) : value_{std::move(value)} {}
Json::Json(Object value) : value_{std::move(value)} {}
Json::Json(Number number)
{
    if (number.is_negative)
        value_ = static_cast<int64_t>(number.bits);
    else
        value_ = number.bits;
}

Json Json::object(std::initializer_list<Member> members)
{
    return Object(members);
}

Json Json::list(std::initializer_list<Json> items)
{
    return Array(items);
}

void Json::add(Json value)
{
    std::get<Array>(value_).push_back(std::move(value));
}

Json Json::parsed(const std::string& text)
{
    Builder builder{text};
    nlohmann::json::sax_parse(text, &builder);
    return std::move(builder.result);
}

const Json* Json::find(std::string_view key) const
{
    if (const Object* members = object())
        for (const auto& [name, value] : *members)
            if (name == key)
                return &value;
    return nullptr;
}

void Json::append(std::string key, Json value)
{
    std::get<Object>(value_).emplace_back(std::move(key), std::move(value));
}

// --- Written ---

void JsonText::next_line()
{
    if (is_indented_) {
        text += '\n';
        text.append(2 * depth_, ' ');
    }
}

void JsonText::next_value()
{
    if (!is_first_)
        text += ',';
    if (depth_ > 0)
        next_line();
    if (key_)
        text += in_quotes(*key_) + (is_indented_ ? ": " : ":");
    key_.reset();
    is_first_ = false;
}

void JsonText::begin(char bracket)
{
    next_value();
    text += bracket;
    ++depth_;
    is_first_ = true;
}

void JsonText::end(char bracket)
{
    --depth_;
    key_.reset();
    if (!is_first_)
        next_line();
    text += bracket;
    is_first_ = false;
}

void JsonText::value(const Json& json)
{
    if (const Json::Array* items = json.array()) {
        begin_array();
        for (const Json& item : *items)
            value(item);
        end_array();
    } else if (const Json::Object* members = json.object()) {
        begin_object();
        for (const auto& [name, member] : *members) {
            key(name);
            value(member);
        }
        end_object();
    } else {
        next_value();
        text += scalar_text(json);
    }
}

std::string text_of(const Json& json)
{
    JsonText text{false};
    text.value(json);
    return text.text;
}

}  // namespace host
