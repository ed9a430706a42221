// One call of a platform operation as the embedded host sees it: its name, what went in, and where the answer goes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

namespace host {

using ByteSpan = std::span<const std::byte>;

inline constexpr uint32_t success = 0;
inline constexpr uint32_t refused = 0xbad0001;
inline constexpr uint32_t not_found = 0xbad0003;
inline constexpr uint32_t bad_parameter = 0xbad0007;

template <class Value>
ByteSpan bytes_of(const Value& value)
{
    return std::as_bytes(std::span{&value, 1});
}

// Where an operation puts (a part of) its answer. Nothing is ever written beyond the capacity that the caller gave.
struct Output {
    std::byte* data;
    size_t capacity;
    uint32_t* size_word;  // null when the operation has none

    // The whole answer; an answer that does not fit is refused and nothing is written.
    uint32_t put(ByteSpan answer) const
    {
        if (!data || answer.size() > capacity)
            return refused;
        write(0, answer);
        reported(answer.size());
        return success;
    }

    template <class Value>
    requires std::is_trivially_copyable_v<Value> uint32_t put(const Value& value)
    const { return put(bytes_of(value)); }

    // A part of the answer, cut at the capacity.
    void write(size_t offset, ByteSpan part) const
    {
        if (data && offset < capacity && !part.empty())
            std::memcpy(data + offset, part.data(), std::min(part.size(), capacity - offset));
    }

    void reported(size_t size) const
    {
        if (size_word)
            *size_word = static_cast<uint32_t>(size);
    }
};

// Where the switch state library puts a value of its own: a pointer and its length.
struct ValueOutput {
    const void** pointer;
    uint32_t* length;
    enum class Owner { library, caller, released } owner;  // released: by the caller with DVSHCK_DataFree
};

// An argument as the caller gave it. Each handler parameter is made from one.
struct Argument {
    enum class Kind { value, text, bytes, output, value_output };

    // What a number is beyond a number, to whoever takes a call from one process into another.
    enum class Meaning {
        number,
        handle,      // the library's name for something: told apart, never looked into
        callback,    // gets the handles that a walk meets, one call each
        context,     // the caller's own, which goes with the callback
        given_back,  // a value that a ValueOutput handed out
    };

    Kind kind;
    uint64_t value = 0;       // kind value: the number, sign-extended; else the pointer
    size_t width = 0;         // kind value: its bytes
    ByteSpan bytes = {};      // kind bytes
    Output output = {};       // kind output
    ValueOutput handed = {};  // kind value_output

    Meaning meaning = Meaning::number;           // of a value, or of what an output receives
    std::optional<uint64_t> second_parameter{};  // an argument may be made of two parameters, one behind the other
};

// --- How the table of operations describes its arguments ---

template <class Value>
requires std::is_integral_v<Value> Argument in(Value value)
{
    return {Argument::Kind::value, static_cast<uint64_t>(value), sizeof value};
}

// Pointers that are not followed: only their addresses cross the boundary.
template <class Target>
Argument address(Target* target, Argument::Meaning meaning)
{
    Argument argument{Argument::Kind::value, reinterpret_cast<uint64_t>(target), sizeof target};
    argument.meaning = meaning;
    return argument;
}

template <class Target>
Argument handle(Target* target)
{
    return address(target, Argument::Meaning::handle);
}

template <class Function>
Argument callback(Function* function)
{
    return address(function, Argument::Meaning::callback);
}

inline Argument context(void* context)
{
    return address(context, Argument::Meaning::context);
}

inline Argument given_back(void* value)
{
    return address(value, Argument::Meaning::given_back);
}

inline Argument text(const char* text)
{
    return {Argument::Kind::text, reinterpret_cast<uint64_t>(text)};
}

// Bytes of a known number, of a number that the next parameter gives, and as many items as the next parameter says.
template <size_t size>
Argument bytes(const void* data)
{
    return {Argument::Kind::bytes, reinterpret_cast<uint64_t>(data), 0,
            ByteSpan{static_cast<const std::byte*>(data), data ? size : 0}};
}

inline Argument bytes(const void* data, uint32_t size)
{
    Argument argument = bytes<0>(data);
    argument.bytes = {static_cast<const std::byte*>(data), data ? size : 0};
    argument.second_parameter = size;
    return argument;
}

template <class Item>
Argument items(const Item* data, uint32_t count)
{
    Argument argument = bytes<0>(data);
    argument.bytes = {reinterpret_cast<const std::byte*>(data), data ? count * sizeof(Item) : 0};
    argument.second_parameter = count;
    return argument;
}

template <class Record>
Argument record(const Record* record)
{
    return bytes<sizeof(Record)>(record);
}

// A record or word of fixed size.
template <class Record>
Argument out(Record* record)
{
    Argument argument{Argument::Kind::output, reinterpret_cast<uint64_t>(record)};
    argument.output = {reinterpret_cast<std::byte*>(record), record ? sizeof *record : 0, nullptr};
    return argument;
}

// A word that receives a handle.
template <class Target>
Argument handle_out(Target** handle)
{
    Argument argument = out(handle);
    argument.meaning = Argument::Meaning::handle;
    return argument;
}

// A buffer whose capacity the next parameter gives.
inline Argument out(void* data, uint32_t capacity)
{
    Argument argument{Argument::Kind::output, reinterpret_cast<uint64_t>(data)};
    argument.output = {static_cast<std::byte*>(data), data ? capacity : 0, nullptr};
    argument.second_parameter = capacity;
    return argument;
}

// A buffer whose capacity stands in the size word behind it.
inline Argument sized_out(void* data, uint32_t* size_word)
{
    Argument argument = out(data, size_word ? *size_word : 0);
    argument.output.size_word = size_word;
    argument.second_parameter = reinterpret_cast<uint64_t>(size_word);
    return argument;
}

template <class Value>
Argument value_out(Value** pointer, uint32_t* length, ValueOutput::Owner owner)
{
    Argument argument{Argument::Kind::value_output, reinterpret_cast<uint64_t>(pointer)};
    argument.handed = {
        const_cast<const void**>(reinterpret_cast<void**>(const_cast<std::remove_const_t<Value>**>(pointer))), length,
        owner};
    argument.second_parameter = reinterpret_cast<uint64_t>(length);
    return argument;
}

// --- How a handler takes them ---

template <class Parameter>
Parameter argument_as(const Argument& argument)
{
    if constexpr (std::is_same_v<Parameter, Output>)
        return argument.output;
    else if constexpr (std::is_same_v<Parameter, ValueOutput>)
        return argument.handed;
    else if constexpr (std::is_same_v<Parameter, ByteSpan>)
        return argument.bytes;
    else if constexpr (std::is_same_v<Parameter, std::string_view>)
        return argument.value ? std::string_view{reinterpret_cast<const char*>(argument.value)} : std::string_view{};
    else if constexpr (std::is_pointer_v<Parameter>)
        return reinterpret_cast<Parameter>(argument.value);
    else
        return static_cast<Parameter>(argument.value);
}

// Answers one call of the named operation: from the next scripted answer if there is one, else from the state. The
// result is the operation's status, or what it points to.
class Operation;
Operation& operation(const char* name, bool returns_pointer = false);
uint64_t dispatch(Operation& operation, std::initializer_list<Argument> arguments);

}  // namespace host
