// A call and its answer as messages between the processes of a shared host. The table of operations says what each part
// is.
#pragma once

#include <memory>

#include "host/call/operations.h"
#include "host/capture/recorded_answer.h"
#include "host/link/message.h"

namespace host::link {

// --- In the process that calls ---

// What goes in, and how much room there is for what comes back. A value that is given back goes by its token.
void write_call(Writer& writer, const Signature& signature, Arguments arguments, uint64_t token);

// A value that is to be given back has its token in the place of a handle.
RecordedAnswer read_answer(Reader& reader);

// --- In the process that answers ---

// A call that came, with memory of its own for all that its arguments point to.
class ReceivedCall {
public:
    // Without a signature when the message is none that write_call makes.
    explicit ReceivedCall(Reader& reader);
    ~ReceivedCall();
    ReceivedCall(const ReceivedCall&) = delete;
    ReceivedCall& operator=(const ReceivedCall&) = delete;

    const Signature* signature() const { return signature_; }
    std::vector<Argument>& arguments() { return arguments_; }

    // What the outputs hold after the call, whose values were put by `values`.
    std::vector<RecordedAnswer::Output> outputs(const Values& values) const;

private:
    // Where an output is received, beside its buffer.
    struct Words {
        const void* pointer;
        uint32_t size;
        size_t end;
    };

    void read_parameter(Reader& reader, size_t i);
    void read_output(Reader& reader, size_t i);
    uint64_t room(size_t size, ByteSpan content = {});
    uint64_t keep(const std::optional<ByteSpan>& bytes, size_t more = 0);

    const Signature* signature_ = nullptr;
    uint64_t parameters_[9] = {};
    Words words_[8] = {};  // by parameter
    std::vector<std::unique_ptr<void, void (*)(void*)>> memory_;
    std::vector<Argument> arguments_;
};

void write_answer(Writer& writer, const RecordedAnswer& answer);

}  // namespace host::link
