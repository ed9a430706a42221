// One call of a platform operation: its arguments, the buffers for its answer, and how its status reads.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/switch_state.h"

namespace host {

using ByteSpan = std::span<const std::byte>;
using Value = std::vector<std::byte>;

inline constexpr uint32_t status_refused = 0xbad0001;  // of an operation that the host does not accept

template <class Record>
ByteSpan bytes_of(const Record& record)
{
    return std::as_bytes(std::span{&record, 1});
}

// The record that fills these bytes exactly; none in bytes of another size.
template <class Record>
std::optional<Record> record_in(ByteSpan bytes)
{
    Record record;
    if (bytes.size() != sizeof record)
        return std::nullopt;
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

inline Value value_of(ByteSpan bytes)
{
    return {bytes.begin(), bytes.end()};
}

// A text with its NUL.
inline Value value_of(std::string_view text)
{
    Value value = value_of(std::as_bytes(std::span{text}));
    value.push_back(std::byte{0});
    return value;
}

// The buffer that receives one output of an operation. Nothing is written beyond the caller's capacity.
struct Output {
    std::byte* data = nullptr;
    size_t capacity = 0;
    uint32_t* size_word = nullptr;  // null when the operation has none
    bool takes_content = false;     // its caller has put something into it
    size_t* end = nullptr;          // unless null, receives the end of what is written

    // Writes the whole answer. An answer that does not fit is refused, and nothing is written.
    uint32_t put(ByteSpan answer) const
    {
        if (!data || answer.size() > capacity)
            return status_refused;
        write(0, answer);
        set_size(answer.size());
        return status_success;
    }

    template <class Record>
    requires std::is_trivially_copyable_v<Record> uint32_t put(const Record& record)
    const { return put(bytes_of(record)); }

    // Writes a part of the answer, cut at the capacity.
    void write(size_t offset, ByteSpan part) const
    {
        if (!data || offset >= capacity || part.empty())
            return;
        const size_t size = std::min(part.size(), capacity - offset);
        std::memcpy(data + offset, part.data(), size);
        if (end)
            *end = std::max(*end, offset + size);
    }

    void set_size(size_t size) const
    {
        if (size_word)
            *size_word = static_cast<uint32_t>(size);
    }
};

// The words that receive a value in memory that the library provides: its address and its length.
struct ValueOutput {
    const void** pointer = nullptr;
    uint32_t* length = nullptr;
    enum class Owner { library, caller, released } owner = Owner::library;  // released: by DVSHCK_DataFree
};

// An argument of a call; a buffer and its size are one argument.
struct Argument {
    enum class Kind { value, text, bytes, output, value_output };

    // The meaning of a number to a recorder, which takes calls from one process into another.
    enum class Meaning {
        number,
        host_text,  // the address of a text, which the embedded host alone looks at
        handle,     // names an object of the library; equal handles name one object
        callback,   // receives the handles of a walk, one call each
        context,    // the caller's word for its callback
        release,    // a value that a ValueOutput received, given back
    };

    Kind kind = Kind::value;
    uint64_t value = 0;             // kind value: the number, sign-extended; else the pointer
    ByteSpan bytes = {};            // kind bytes
    Output output = {};             // kind output
    ValueOutput value_output = {};  // kind value_output

    Meaning meaning = Meaning::number;           // of a value, or of what an output receives
    std::optional<uint64_t> second_parameter{};  // of an argument that is made of two parameters
};

using Arguments = std::span<const Argument>;

// Answers one call of an operation. The result is the operation's status, or the pointer that it returns. The embedded
// host implements both, and so may anything else that is linked below the stand-ins.
struct Signature;
class Operation;
Operation& operation(const Signature& signature);
uint64_t dispatch(Operation& operation, Arguments arguments);

}  // namespace host
