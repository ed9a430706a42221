// The operations of both platform libraries as data: the role of each parameter, and arguments made by these roles.
#pragma once

#include <array>
#include <atomic>
#include <string_view>
#include <tuple>

#include "host/call/call.h"

namespace host {

// The role of a parameter. Those of the second line belong to the parameter before them.
enum class Role : uint8_t {
    in,         // a number
    host_text,  // a number to a recorder; the embedded host looks at the text at this address, unless it is null
    text,       // a text that ends with NUL, or null
    mac,        // the six bytes of a MAC address
    record,     // a record that goes in, of the size of its type
    bytes,
    items,
    count,  // data that goes in; its count of bytes or items
    out,    // a record or word that receives an answer
    buffer,
    capacity,  // a buffer that receives an answer; its capacity
    sized_out,
    filled_out,  // one into which its caller has put something
    size,        // the same; the word that holds its capacity, and then the size
    handle,
    handle_out,  // a handle; a word that receives one
    callback,
    context,  // the function of a walk; the caller's word for it
    library_value,
    caller_value,
    released_value,  // a word that receives a value's address, by who owns the value
    length,          // the word that receives the value's length
    release,         // a value that goes back to the library
};

// Whether a parameter belongs to the one before it.
constexpr bool is_second(Role role)
{
    return role == Role::count || role == Role::capacity || role == Role::size || role == Role::length;
}

constexpr bool is_output(Role role)
{
    switch (role) {
    case Role::out:
    case Role::buffer:
    case Role::sized_out:
    case Role::filled_out:
    case Role::handle_out:
    case Role::library_value:
    case Role::caller_value:
    case Role::released_value:
        return true;
    default:
        return false;
    }
}

// Whether a parameter receives a value's address.
constexpr bool is_value_output(Role role)
{
    return role == Role::library_value || role == Role::caller_value || role == Role::released_value;
}

// Whether a recorder writes what goes in. Callbacks, contexts and values that go back belong to the caller's process.
constexpr bool is_recorded_input(Role role)
{
    switch (role) {
    case Role::in:
    case Role::host_text:
    case Role::text:
    case Role::mac:
    case Role::record:
    case Role::bytes:
    case Role::items:
    case Role::handle:
        return true;
    default:
        return false;
    }
}

enum class ResultKind : uint8_t { none, status, text, handle };

// What a handle names, by the address of a word for its type: null for what is no handle.
using ObjectKind = const char*;
template <class Object>
inline constexpr char kind_of_object = 0;

// What the table says of one operation.
struct Signature {
    std::string_view name;  // NUL-terminated
    ResultKind result;
    uint8_t num_parameters;
    std::array<Role, 8> parameters;
    std::array<uint32_t, 8> target_bytes;  // the size of what each parameter points to; 0 where that is not known
    std::array<ObjectKind, 8> objects;     // what each parameter names, receives or is called back with
    ObjectKind result_object;

    constexpr std::span<const Role> roles() const { return {parameters.data(), num_parameters}; }
    constexpr size_t num_arguments() const
    {
        size_t count = 0;
        for (const Role role : roles())
            count += !is_second(role);
        return count;
    }
    bool returns_pointer() const { return result == ResultKind::text || result == ResultKind::handle; }
};

// Every operation of both libraries; and the one of a name, or null.
std::span<const Signature> signatures();
const Signature* find_signature(std::string_view name);

// The operation behind a stand-in, looked up at its first call. An atomic word instead of a static reference, whose
// guard would stay taken in a child that is forked during the lookup.
class OperationSlot {
public:
    Operation& of(const Signature& signature)
    {
        Operation* found = operation_.load(std::memory_order_acquire);
        if (!found)
            operation_.store(found = &operation(signature), std::memory_order_release);
        return *found;
    }

private:
    std::atomic<Operation*> operation_{nullptr};
};

// --- Types of a declared operation ---

template <class Function>
struct TypesOf;

template <class R, class... Parameters>
struct TypesOf<R(Parameters...)> {
    using Result = R;
    template <size_t i>
    using Parameter = std::tuple_element_t<i, std::tuple<Parameters...>>;
};

template <class Result>
constexpr ResultKind result_kind()
{
    if constexpr (std::is_void_v<Result>)
        return ResultKind::none;
    else if constexpr (std::is_same_v<Result, const char*>)
        return ResultKind::text;
    else if constexpr (std::is_pointer_v<Result>)
        return ResultKind::handle;
    else
        return ResultKind::status;
}

template <class Parameter>
constexpr uint32_t target_bytes()
{
    using Target = std::remove_pointer_t<Parameter>;
    if constexpr (std::is_pointer_v<Parameter> && requires { sizeof(Target); })
        return std::is_void_v<Target> ? 0 : sizeof(Target);
    else
        return 0;
}

// Behind any pointers, and the first parameter of a callback.
template <class Type>
struct ObjectBehind {
    static constexpr ObjectKind kind = nullptr;
};

template <class Object>
struct ObjectBehind<Object*> {
    static constexpr ObjectKind kind = &kind_of_object<Object>;
};

template <class Object>
struct ObjectBehind<Object**> : ObjectBehind<Object*> {
};

template <class Result, class First, class... Rest>
struct ObjectBehind<Result (*)(First, Rest...)> : ObjectBehind<First> {
};

// A row of the table. A record whose header is not included does not compile.
template <class Result, class... Parameters, class... Roles>
consteval Signature signature_of(Result (*)(Parameters...), std::string_view name, Roles... roles)
{
    Signature signature{name,
                        result_kind<Result>(),
                        sizeof...(Roles),
                        {roles...},
                        {target_bytes<Parameters>()...},
                        {ObjectBehind<Parameters>::kind...},
                        ObjectBehind<Result>::kind};
    for (size_t i = 0; i < sizeof...(Roles); ++i) {
        const Role role = signature.parameters[i];
        if ((role == Role::record || role == Role::out || role == Role::items) && signature.target_bytes[i] == 0)
            throw "the type behind this parameter is incomplete";
    }
    return signature;
}

// --- Arguments from parameters ---

template <class Parameter>
uint64_t word_of(Parameter parameter)
{
    if constexpr (std::is_pointer_v<Parameter>)
        return reinterpret_cast<uint64_t>(parameter);
    else
        return static_cast<uint64_t>(parameter);
}

// Makes arguments from the words of a call's parameters.
void make_arguments(const Signature& signature, const uint64_t* words, Argument* arguments);

template <size_t num_arguments, class... Parameters>
std::array<Argument, num_arguments> arguments_of(const Signature& signature, Parameters... parameters)
{
    const uint64_t words[] = {word_of(parameters)..., 0};
    std::array<Argument, num_arguments> arguments;
    make_arguments(signature, words, arguments.data());
    return arguments;
}

}  // namespace host
