// Messages between the processes of a shared host: their parts, and how they pass through a socket.
//
// A message is its length, a word of 32 bits that counts what follows it; its kind, a byte; and its parts. Numbers have
// the machine's order of bytes: both ends are on one machine.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/call/call.h"

namespace host::link {

enum class Kind : uint8_t {
    hello = 'h',    // of a client, before all else; the answer is a hello too
    call = 'c',     // of a platform operation
    answer = 'a',   // to it
    control = 'k',  // JSON: {"call": NAME, "arguments": [...]}
    reply = 'r',    // JSON: {"result": ...} or {"error": TEXT}
    error = 'e',    // a text; the connection ends behind it
};

// What a client says first: these words, the number of the connection that its parent had before a fork, or 0. The
// answer holds the number of its own connection.
inline constexpr std::string_view greeting = "qdp-host 1";

inline constexpr size_t max_request_bytes = 4 << 20;
inline constexpr size_t max_answer_bytes = 64 << 20;
inline constexpr std::chrono::seconds patience{5};  // with a peer in the middle of a message

// The parts of a message that is being made.
class Writer {
public:
    explicit Writer(Kind kind);

    // Makes room for so many bytes at once.
    void reserve(size_t size) { message_.reserve(size); }

    template <class Number>
    requires std::is_arithmetic_v<Number>
    void number(Number value) { append(bytes_of(value)); }
    void bytes(ByteSpan bytes);
    void text(std::string_view text) { bytes(std::as_bytes(std::span{text})); }

    template <class Part, class Write>
    void optional(const std::optional<Part>& part, Write write)
    {
        number(uint8_t{part.has_value()});
        if (part)
            write(*part);
    }
    void optional_bytes(const std::optional<ByteSpan>& part)
    {
        optional(part, [this](ByteSpan each) { bytes(each); });
    }

    // The whole, with its length.
    ByteSpan finished();

private:
    void append(ByteSpan bytes) { message_.insert(message_.end(), bytes.begin(), bytes.end()); }

    Value message_;
};

// The parts of a message that came. What it lacks reads as zeros and empty parts, and is_valid turns false.
class Reader {
public:
    explicit Reader(ByteSpan parts) : rest_{parts} {}

    template <class Number>
    Number number()
    {
        Number value{};
        if (const ByteSpan found = take(sizeof value); !found.empty())
            std::memcpy(&value, found.data(), sizeof value);
        return value;
    }
    ByteSpan bytes() { return take(number<uint32_t>()); }
    std::string_view text()
    {
        const ByteSpan found = bytes();
        return {reinterpret_cast<const char*>(found.data()), found.size()};
    }

    template <class Read>
    auto optional(Read read) -> std::optional<decltype(read())>
    {
        return number<uint8_t>() ? std::optional{read()} : std::nullopt;
    }
    std::optional<ByteSpan> optional_bytes()
    {
        return optional([this] { return bytes(); });
    }

    void refuse() { is_valid_ = false; }
    bool is_valid() const { return is_valid_; }
    bool is_whole() const { return is_valid_ && rest_.empty(); }  // and nothing is behind it

private:
    ByteSpan take(size_t size);

    ByteSpan rest_;
    bool is_valid_ = true;
};

struct Message {
    Kind kind;
    ByteSpan parts;  // valid until the next message
};

// One end of a connection, which it closes. Its peer has `patience` to send the rest of a message, and to take one.
class Socket {
public:
    explicit Socket(int file) : file_{file} {}
    ~Socket();
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int file() const { return file_; }

    // Whether all of it was sent. `was_taken` turns true when its peer may have seen it.
    bool send(ByteSpan message, bool* was_taken = nullptr);

    // The next message, none when the peer has gone, is too slow, or sends more than `most` bytes at once. A wait for
    // the begin of a message has no end, unless `is_patient` is false.
    std::optional<Message> receive(size_t max_bytes, bool is_patient = true);

    // Sets how long the kernel waits in a send and a receive.
    void limit_waits();

private:
    bool receive_until(size_t size, bool is_patient);

    int file_;
    Value received_;
    size_t num_received_ = 0;
};

}  // namespace host::link
