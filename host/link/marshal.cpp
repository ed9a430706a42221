// A call and its answer as messages between the processes of a shared host.
#include "host/link/marshal.h"

#include <cstdlib>
#include <new>

#include "platform/limits.h"

namespace host::link {

namespace {

std::optional<ByteSpan> unless_null(const Argument& argument, ByteSpan bytes)
{
    return argument.value ? std::optional{bytes} : std::nullopt;
}

ByteSpan text_at(uint64_t address)
{
    const auto* text = reinterpret_cast<const char*>(address);
    return std::as_bytes(std::span{text, text ? std::strlen(text) : 0});
}

void write_number(Writer& writer, const Argument& argument, uint64_t token)
{
    switch (argument.meaning) {
    case Argument::Meaning::number:
    case Argument::Meaning::handle:
        writer.number(argument.value);
        break;
    case Argument::Meaning::host_text:
        writer.optional_bytes(unless_null(argument, text_at(argument.value)));
        break;
    case Argument::Meaning::callback:
        writer.number(uint64_t{argument.value != 0});
        break;
    case Argument::Meaning::context:
        break;
    case Argument::Meaning::release:
        writer.number(token);
        break;
    }
}

void write_output(Writer& writer, const Output& output)
{
    writer.number(uint8_t{output.data != nullptr});
    writer.number(uint8_t{output.size_word != nullptr});
    writer.number(uint64_t{output.size_word ? *output.size_word : output.capacity});
    writer.optional_bytes(output.takes_content && output.data ? std::optional{ByteSpan{output.data, output.capacity}}
                                                              : std::nullopt);
}

}  // namespace

void write_call(Writer& writer, const Signature& signature, Arguments arguments, uint64_t token)
{
    writer.number(static_cast<uint16_t>(&signature - signatures().data()));
    for (const Argument& argument : arguments) {
        switch (argument.kind) {
        case Argument::Kind::value:
            write_number(writer, argument, token);
            break;
        case Argument::Kind::text:
            writer.optional_bytes(unless_null(argument, text_at(argument.value)));
            break;
        case Argument::Kind::bytes:
            writer.optional_bytes(unless_null(argument, argument.bytes));
            break;
        case Argument::Kind::output:
            write_output(writer, argument.output);
            break;
        case Argument::Kind::value_output:
            writer.number(argument.value_output.length ? *argument.value_output.length : 0);
            break;
        }
    }
}

// --- Received ---

ReceivedCall::ReceivedCall(Reader& reader)
{
    const auto number = reader.number<uint16_t>();
    if (!reader.is_valid() || number >= signatures().size())
        return;
    signature_ = &signatures()[number];
    for (size_t i = 0; i < signature_->num_parameters; ++i)
        if (!is_second(signature_->parameters[i]))
            read_parameter(reader, i);
    if (!reader.is_whole()) {
        signature_ = nullptr;
        return;
    }

    arguments_.resize(signature_->num_arguments());
    make_arguments(*signature_, parameters_, arguments_.data());
    auto argument = arguments_.begin();
    for (size_t i = 0; i < signature_->num_parameters; ++i) {
        if (is_second(signature_->parameters[i]))
            continue;
        argument->output.capacity = std::min(argument->output.capacity, max_answer_bytes);
        argument->output.end = &words_[i].end;
        ++argument;
    }
}

ReceivedCall::~ReceivedCall()
{
    for (const Argument& argument : arguments_)
        if (argument.kind == Argument::Kind::value_output && argument.value_output.owner == ValueOutput::Owner::caller)
            std::free(const_cast<void*>(*argument.value_output.pointer));
}

// Only the first bytes behind the content are cleared, so that the other pages of a large buffer take no memory until
// an answer writes them: an answer leaves no gaps but in its head.
uint64_t ReceivedCall::room(size_t size, ByteSpan content)
{
    constexpr size_t max_zeros = 4096;
    auto* made = static_cast<std::byte*>(std::malloc(std::max<size_t>(size, 1)));
    if (!made)
        throw std::bad_alloc{};
    memory_.emplace_back(made, std::free);
    const size_t filled = std::min(content.size(), size);
    if (filled > 0)
        std::memcpy(made, content.data(), filled);
    std::memset(made + filled, 0, std::min(size - filled, max_zeros));
    return word_of(made);
}

uint64_t ReceivedCall::keep(const std::optional<ByteSpan>& bytes, size_t more)
{
    return bytes ? room(bytes->size() + more, *bytes) : 0;
}

// Reads a parameter, and with a buffer the size that belongs to it.
void ReceivedCall::read_parameter(Reader& reader, size_t i)
{
    const Role role = signature_->parameters[i];
    const size_t target_bytes = signature_->target_bytes[i];
    switch (role) {
    case Role::host_text:
    case Role::text:
        parameters_[i] = keep(reader.optional_bytes(), 1);
        break;
    case Role::mac:
    case Role::record: {
        const auto record = reader.optional_bytes();
        if (record && record->size() != (role == Role::mac ? mac_bytes : target_bytes))
            reader.refuse();
        parameters_[i] = keep(record);
        break;
    }
    case Role::bytes:
    case Role::items: {
        const auto items = reader.optional_bytes();
        const size_t item_bytes = role == Role::items ? target_bytes : 1;
        if (items && items->size() % item_bytes != 0)
            reader.refuse();
        parameters_[i] = keep(items);
        parameters_[i + 1] = items ? items->size() / item_bytes : 0;
        break;
    }
    case Role::out:
    case Role::handle_out:
    case Role::buffer:
    case Role::sized_out:
    case Role::filled_out:
        read_output(reader, i);
        break;
    case Role::library_value:
    case Role::caller_value:
    case Role::released_value:
        parameters_[i] = word_of(&words_[i].pointer);
        parameters_[i + 1] = word_of(&words_[i].size);
        words_[i].size = reader.number<uint32_t>();
        break;
    case Role::context:
        break;
    default:
        parameters_[i] = reader.number<uint64_t>();
        break;
    }
}

void ReceivedCall::read_output(Reader& reader, size_t i)
{
    const Role role = signature_->parameters[i];
    const bool has_data = reader.number<uint8_t>();
    const bool has_size_word = reader.number<uint8_t>();
    const auto capacity = reader.number<uint64_t>();
    const auto content = reader.optional_bytes();
    const bool is_record = role == Role::out || role == Role::handle_out;
    if (has_data)
        parameters_[i] = room(is_record ? signature_->target_bytes[i] : std::min(capacity, max_answer_bytes),
                              content.value_or(ByteSpan{}));
    words_[i].size = static_cast<uint32_t>(capacity);
    if (role == Role::buffer)
        parameters_[i + 1] = capacity;
    else if (!is_record && has_size_word)
        parameters_[i + 1] = word_of(&words_[i].size);
}

std::vector<RecordedAnswer::Output> ReceivedCall::outputs(const Values& values) const
{
    std::vector<RecordedAnswer::Output> outputs;
    for (const Argument& argument : arguments_) {
        RecordedAnswer::Output made;
        if (argument.kind == Argument::Kind::output) {
            const Output& output = argument.output;
            if (*output.end > 0)
                made.content = value_of(ByteSpan{output.data, *output.end});
            if (output.size_word)
                made.size = *output.size_word;
        } else if (argument.kind == Argument::Kind::value_output) {
            const ValueOutput& output = argument.value_output;
            const void* value = *output.pointer;
            if (value)
                made.content = value_of(
                    values.value_put(output).value_or(ByteSpan{static_cast<const std::byte*>(value), *output.length}));
            if (value && output.owner == ValueOutput::Owner::released)
                made.handle = word_of(value);
            made.size = *output.length;
        } else {
            continue;
        }
        outputs.push_back(std::move(made));
    }
    return outputs;
}

// --- Answers ---

void write_answer(Writer& writer, const RecordedAnswer& answer)
{
    size_t size = 64 * (answer.outputs.size() + 1) + 8 * answer.steps.size();
    for (const RecordedAnswer::Output& output : answer.outputs)
        size += output.content ? output.content->size() : 0;
    writer.reserve(size);
    const auto number = [&](auto value) { writer.number(value); };
    const auto bytes = [&](const Value& value) { writer.bytes(value); };
    writer.number(answer.result);
    writer.optional(answer.text, bytes);
    writer.number(static_cast<uint32_t>(answer.outputs.size()));
    for (const RecordedAnswer::Output& output : answer.outputs) {
        writer.optional(output.content, bytes);
        writer.optional(output.size, number);
        writer.optional(output.handle, number);
    }
    writer.number(static_cast<uint32_t>(answer.steps.size()));
    for (const uint64_t step : answer.steps)
        writer.number(step);
}

RecordedAnswer read_answer(Reader& reader)
{
    const auto bytes = [&] { return value_of(reader.bytes()); };
    RecordedAnswer answer;
    answer.result = reader.number<uint64_t>();
    answer.text = reader.optional(bytes);
    for (auto left = reader.number<uint32_t>(); left > 0 && reader.is_valid(); --left) {
        RecordedAnswer::Output output;
        output.content = reader.optional(bytes);
        output.size = reader.optional([&] { return reader.number<uint32_t>(); });
        output.handle = reader.optional([&] { return reader.number<uint64_t>(); });
        answer.outputs.push_back(std::move(output));
    }
    for (auto left = reader.number<uint32_t>(); left > 0 && reader.is_valid(); --left)
        answer.steps.push_back(reader.number<uint64_t>());
    return answer;
}

}  // namespace host::link
