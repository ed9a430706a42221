// JSON values, read from a text and written to one: scenarios, captures, and what tests read.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace host {

// What is wrong with a file that a user names: `/switches/0/mtu: expected a whole number from 68 to 65535, found
// "large"`.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Json {
public:
    using Array = std::vector<Json>;
    using Member = std::pair<std::string, Json>;
    using Object = std::vector<Member>;  // in the order of the text

    // Defined in one place, which spares every user of the type a good deal of code.
    Json();  // null
    Json(const Json& other);
    Json(Json&& other) noexcept;
    Json& operator=(const Json& other);
    Json& operator=(Json&& other) noexcept;
    ~Json();

    Json(bool value);
    Json(double value);
    Json(const char* value);
    Json(std::string_view value);
    Json(std::string value);
    Json(Array value);
    Json(Object value);
    template <std::integral Integer>
    Json(Integer value) : Json{Number{std::cmp_less(value, 0), static_cast<uint64_t>(value)}}
    {
    }

    static Json object(std::initializer_list<Member> members);
    static Json list(std::initializer_list<Json> items);

    // Throws an InputError that says where the text is no JSON, or has a key twice.
    static Json parsed(const std::string& text);

    bool is_null() const { return std::holds_alternative<std::monostate>(value_); }

    // Null when the value is of another type.
    const bool* boolean() const { return std::get_if<bool>(&value_); }
    const uint64_t* natural() const { return std::get_if<uint64_t>(&value_); }
    const int64_t* negative() const { return std::get_if<int64_t>(&value_); }
    const double* fraction() const { return std::get_if<double>(&value_); }
    const std::string* text() const { return std::get_if<std::string>(&value_); }
    const Array* array() const { return std::get_if<Array>(&value_); }
    const Object* object() const { return std::get_if<Object>(&value_); }

    // The member of an object; null when there is none, or no object.
    const Json* find(std::string_view key) const;

    bool is_structured() const { return array() || object(); }

    // Adds to an array; to an object, whose members do not have the key.
    void add(Json value);
    void append(std::string key, Json value);

private:
    struct Number {
        bool is_negative;
        uint64_t bits;
    };
    explicit Json(Number number);

    std::variant<std::monostate, bool, uint64_t, int64_t, double, std::string, Array, Object> value_;
};

// A text of JSON that is written from its begin to its end, each value on a line, or all on one.
class JsonText {
public:
    explicit JsonText(bool is_indented) : is_indented_{is_indented} {}

    // The key of the value that comes next. A key without a value is not written.
    void key(std::string_view key) { key_ = key; }

    void value(const Json& value);
    void begin_object() { begin('{'); }
    void end_object() { end('}'); }
    void begin_array() { begin('['); }
    void end_array() { end(']'); }

    std::string text;

private:
    void begin(char bracket);
    void end(char bracket);
    void next_line();
    void next_value();

    bool is_indented_;
    std::optional<std::string> key_;
    size_t depth_ = 0;
    bool is_first_ = true;
};

// Whether a text is UTF-8, which a text in JSON is.
bool is_utf8(std::string_view text);

// On one line.
std::string text_of(const Json& json);

// A key as a JSON pointer has it: "~" and "/" are written as "~0" and "~1".
std::string escaped(const std::string& key);

}  // namespace host
