// Messages between the processes of a shared host.
#include "host/link/message.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace host::link {

namespace {

constexpr size_t head = sizeof(uint32_t) + sizeof(Kind);

}  // namespace

Writer::Writer(Kind kind) : message_(sizeof(uint32_t))
{
    append(bytes_of(kind));
}

void Writer::bytes(ByteSpan bytes)
{
    number(static_cast<uint32_t>(bytes.size()));
    append(bytes);
}

ByteSpan Writer::finished()
{
    const auto length = static_cast<uint32_t>(message_.size() - sizeof(uint32_t));
    std::memcpy(message_.data(), &length, sizeof length);
    return message_;
}

ByteSpan Reader::take(size_t size)
{
    if (size > rest_.size()) {
        refuse();
        rest_ = {};
        return {};
    }
    const ByteSpan found = rest_.first(size);
    rest_ = rest_.subspan(size);
    return found;
}

Socket::~Socket()
{
    close(file_);
}

void Socket::limit_waits()
{
    const timeval time{patience.count(), 0};
    setsockopt(file_, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
    setsockopt(file_, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
}

bool Socket::send(ByteSpan message, bool* was_taken)
{
    while (!message.empty()) {
        const ssize_t count = ::send(file_, message.data(), message.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        if (was_taken)
            *was_taken = true;
        message = message.subspan(static_cast<size_t>(count));
    }
    return true;
}

// Receives until there are so many bytes, and as many more as have come.
bool Socket::receive_until(size_t size, bool is_patient)
{
    constexpr size_t room = 1 << 16;  // for most messages at once
    using Clock = std::chrono::steady_clock;
    std::optional<Clock::time_point> end;
    while (num_received_ < size) {
        // The room grows with what comes, not with what a peer says that it will send.
        if (received_.size() == num_received_)
            received_.resize(std::max(received_.size() * 2, room));
        const ssize_t count = recv(file_, received_.data() + num_received_, received_.size() - num_received_, 0);
        if (count > 0) {
            num_received_ += static_cast<size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            const bool is_idle = count < 0 && errno == EAGAIN && num_received_ == 0;
            if (!is_idle || !is_patient)
                return false;
        }
        if (num_received_ > 0 && num_received_ < size) {
            if (!end)
                end = Clock::now() + 2 * patience;
            else if (Clock::now() > *end)
                return false;
        }
    }
    return true;
}

std::optional<Message> Socket::receive(size_t max_bytes, bool is_patient)
{
    num_received_ = 0;
    if (received_.size() > 1 << 20)
        Value{}.swap(received_);
    if (!receive_until(head, is_patient))
        return std::nullopt;
    uint32_t length;
    std::memcpy(&length, received_.data(), sizeof length);
    const size_t size = sizeof length + length;
    if (length < sizeof(Kind) || size > max_bytes || !receive_until(size, is_patient) || num_received_ != size)
        return std::nullopt;
    return Message{static_cast<Kind>(received_[sizeof length]), ByteSpan{received_}.subspan(head, size - head)};
}

}  // namespace host::link
