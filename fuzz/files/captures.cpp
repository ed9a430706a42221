// One execution: the input is a capture, which is refused, or answers the calls that it names as a caller makes them.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/files/refusal.h"
#include "host/call/hex.h"
#include "host/call/json.h"
#include "host/capture/replay.h"
#include "platform/limits.h"

namespace {

using host::Json;
using host::Role;

// A file in memory, which has a path.
class MemoryFile {
public:
    MemoryFile(const uint8_t* data, size_t size) : descriptor_{memfd_create("capture", MFD_CLOEXEC)}
    {
        if (descriptor_ < 0 || write(descriptor_, data, size) != static_cast<ssize_t>(size))
            fuzz::fault("the machine lacks memory");
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

// The parameters of one call: what went in as the line has it, and outputs with little room, each in a block of its
// own, so that a write beyond one is seen.
class Parameters {
public:
    Parameters(const host::Signature& signature, const Json::Array& inputs)
    {
        auto input = inputs.begin();
        const auto roles = signature.roles();
        for (size_t i = 0; i < roles.size(); ++i) {
            if (host::is_recorded_input(roles[i]))
                words_[i] = taken(*input++, roles[i] == Role::mac ? mac_bytes : signature.target_bytes[i]);
            else if (host::is_second(roles[i]))
                words_[i] = second_of(roles[i - 1], roles[i], signature.target_bytes[i - 1]);
            else if (host::is_output(roles[i]))
                words_[i] = block(signature.target_bytes[i] != 0 ? signature.target_bytes[i] : little_room);
            if (roles[i] == Role::caller_value)
                callers_values_.push_back(words_[i]);
        }
    }

    // Frees the values that became the caller's.
    ~Parameters()
    {
        for (const uint64_t word : callers_values_)
            std::free(*reinterpret_cast<void**>(word));
    }
    Parameters(const Parameters&) = delete;
    Parameters& operator=(const Parameters&) = delete;

    const uint64_t* words() const { return words_.data(); }

private:
    static constexpr size_t little_room = 16;

    uint64_t block(size_t size)
    {
        size_ = size;
        blocks_.push_back(std::make_unique<uint8_t[]>(size));
        return host::word_of(blocks_.back().get());
    }

    // With zero bytes up to what a caller of such a record has to give, and with a NUL.
    uint64_t copied(const void* data, size_t size, size_t least)
    {
        const uint64_t address = block(std::max(size + 1, least));
        std::memcpy(blocks_.back().get(), data, size);
        size_ = size;
        return address;
    }

    uint64_t taken(const Json& input, size_t least)
    {
        if (const auto* number = input.natural())
            return *number;
        if (const auto* text = input.text())
            return copied(text->data(), text->size(), least);
        if (const Json* handle = input.find("handle"))
            return *handle->natural();
        const Json* bytes = input.find("bytes");
        if (!bytes)
            return 0;
        const auto content = host::from_hex(*bytes->text());
        return copied(content->data(), content->size(), least);
    }

    // What follows data or an output: how much there is, or the word that tells it.
    uint64_t second_of(Role first, Role second, size_t target_bytes)
    {
        if (second == Role::count)
            return first == Role::items ? size_ / target_bytes : size_;
        if (second == Role::capacity)
            return size_;
        const auto size = static_cast<uint32_t>(size_);
        return copied(&size, sizeof size, 0);
    }

    std::array<uint64_t, 9> words_{};
    std::vector<uint64_t> callers_values_;
    std::vector<std::unique_ptr<uint8_t[]>> blocks_;
    size_t size_ = 0;  // of the last block's content
};

volatile size_t text_length;  // so that a text is read to its end

void call(host::Replay& replay, host::Values& values, const Json& line)
{
    const host::Signature& signature = *host::find_signature(*line.find("operation")->text());
    const Parameters parameters{signature, *line.find("in")->array()};
    std::array<host::Argument, 8> arguments;
    host::make_arguments(signature, parameters.words(), arguments.data());
    std::vector<void*> steps;
    values.begin_call();
    const uint64_t result = replay.answer(signature, {arguments.data(), signature.num_arguments()}, values, steps);
    if (signature.result == host::ResultKind::text && result != 0)
        text_length = std::strlen(reinterpret_cast<const char*>(result));
}

// A last line that was cut off is none.
void answer_all(const std::string& text, host::Replay& replay)
{
    host::Values values;
    std::istringstream lines{text};
    std::string line;
    std::getline(lines, line);
    for (size_t number = 2; std::getline(lines, line) && number != replay.truncated_line(); ++number)
        call(replay, values, Json::parsed(line));
    values.release_all();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile file{data, size};
    try {
        host::Replay replay{file.path()};
        answer_all({reinterpret_cast<const char*>(data), size}, replay);
    } catch (const host::BrokenCapture& refusal) {
        fuzz::check_refusal(refusal, file.path());
    }
    return 0;
}
