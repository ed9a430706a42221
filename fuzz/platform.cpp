// The hostile platform: below the stand-ins for both libraries, in the place of the embedded host.
#include "fuzz/platform.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string_view>
#include <vector>

#include "fuzz/fault.h"
#include "fuzz/texts.h"
#include "host/call/operations.h"
#include "platform/fpo.h"
#include "platform/lb.h"
#include "platform/settings.h"
#include "platform/switch_state.h"
#include "platform/uplink.h"

namespace host {

// An operation answers as its kind does.
class Operation {
public:
    std::string_view name;
    uint64_t (*answer)(Operation& operation, std::span<const Argument> arguments);
};

}  // namespace host

namespace fuzz {

namespace {

using host::Argument;
using host::Operation;
using host::Output;
using host::ValueOutput;

// Of the execution.
Input* input;
std::vector<void*> kept;          // what the platform owns and callers may look at
std::set<void*> values_out;       // what callers have to release
volatile uint8_t last_byte_read;  // so that reading is not optimised away

void read_all(const void* data, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        last_byte_read = static_cast<const uint8_t*>(data)[i];
}

// A block exactly as long as its content, so that reading beyond it is seen.
void* block_of(ByteSpan content, size_t size)
{
    void* block = std::malloc(size == 0 ? 1 : size);
    if (!block)
        fault("the machine lacks memory");
    std::memset(block, 0, size);
    if (!content.empty())
        std::memcpy(block, content.data(), content.size() < size ? content.size() : size);
    return block;
}

// A library looks at all that it is given, and may fill all of the room that it is given.
void look_at(const Argument& argument)
{
    switch (argument.kind) {
    case Argument::Kind::text:
        if (argument.value != 0)
            read_all(reinterpret_cast<const void*>(argument.value),
                     std::strlen(reinterpret_cast<const char*>(argument.value)) + 1);
        break;
    case Argument::Kind::bytes:
        read_all(argument.bytes.data(), argument.bytes.size());
        break;
    case Argument::Kind::output:
        if (argument.output.capacity != 0) {
            read_all(argument.output.data, 1);
            read_all(argument.output.data + argument.output.capacity - 1, 1);
        }
        break;
    default:
        break;
    }
}

// --- Answers ---

uint32_t take_status()
{
    constexpr uint32_t refusals[] = {1, host::status_refused, status_not_found, status_bad_parameter, UINT32_MAX};
    if (input->is_empty())
        return host::status_refused;  // so that a walk that the library never ends does end
    return input->chance(224) ? status_success : input->one_of(refusals);
}

enum class Content { repeated_run, run, run_inside, none, kinds };
enum class SizeWord { of_content, untouched, any, kinds };

// How much of a buffer a repeated run fills. Large buffers are filled to the end only now and then.
size_t repeated(uint8_t kind, size_t room)
{
    constexpr size_t mostly = 8192;
    constexpr uint8_t to_the_end = 0xfc;
    return kind < to_the_end && room > mostly ? mostly : room;
}

// The number of bytes written.
size_t write_content(std::span<uint8_t> room)
{
    const uint8_t drawn = input->byte();
    const auto kind = static_cast<Content>(drawn % static_cast<uint8_t>(Content::kinds));
    if (kind == Content::none || room.empty())
        return 0;
    const size_t offset = kind == Content::run_inside ? input->number() % room.size() : 0;
    const ByteSpan run = input->run();
    const size_t fitting = std::min(run.size(), room.size() - offset);
    const size_t written = kind == Content::repeated_run ? repeated(drawn, room.size()) : fitting;
    fill(room.subspan(offset, written), run);
    return written;
}

void answer_output(const Output& output)
{
    const size_t written = write_content({reinterpret_cast<uint8_t*>(output.data), output.capacity});
    if (!output.size_word)
        return;
    switch (static_cast<SizeWord>(input->byte() % static_cast<uint8_t>(SizeWord::kinds))) {
    case SizeWord::of_content:
        *output.size_word = static_cast<uint32_t>(written);
        break;
    case SizeWord::any:
        *output.size_word = static_cast<uint32_t>(input->number());
        break;
    default:
        break;
    }
}

// The lengths of the records that settings are kept in; any other is refused at once.
constexpr size_t setting_bytes[] = {sizeof(LBSettings),  sizeof(FpoSettings), sizeof(FilterTypesSetting),
                                    sizeof(WordSetting), sizeof(ByteSetting), sizeof(UplinkRings)};

std::vector<uint8_t> take_content()
{
    if (input->chance(128)) {
        std::vector<uint8_t> setting(input->one_of(setting_bytes));
        fill(setting, input->run());
        return setting;
    }
    const std::string text = take_text(*input);
    return {text.begin(), text.end()};
}

enum class ValueKind { sized, unsized, null, untouched, kinds };

// A value has its true length, or is a text when the library does not tell its length.
void answer_value(const ValueOutput& output)
{
    const auto kind = static_cast<ValueKind>(input->byte() % static_cast<uint8_t>(ValueKind::kinds));
    if (kind == ValueKind::untouched)
        return;
    if (kind == ValueKind::null) {
        *output.pointer = nullptr;
        *output.length = 0;
        return;
    }
    const std::vector<uint8_t> content = take_content();
    const bool is_unsized = kind == ValueKind::unsized && output.owner == ValueOutput::Owner::library;
    void* value = block_of(content, is_unsized ? content.size() + 1 : content.size());
    if (output.owner == ValueOutput::Owner::library)
        kept.push_back(value);
    if (output.owner == ValueOutput::Owner::released)
        values_out.insert(value);
    *output.pointer = value;
    if (!is_unsized)
        *output.length = static_cast<uint32_t>(content.size());
}

void answer_outputs(std::span<const Argument> arguments, uint32_t status)
{
    for (const Argument& argument : arguments) {
        if (argument.kind == Argument::Kind::output)
            answer_output(argument.output);
        if (argument.kind == Argument::Kind::value_output && status == status_success)
            answer_value(argument.value_output);
    }
}

// An operation that returns a status.
uint64_t answer_status(Operation&, std::span<const Argument> arguments)
{
    const uint32_t status = take_status();
    answer_outputs(arguments, status);
    return status;
}

// A handle, or null: only the library itself looks behind it.
uint64_t take_handle()
{
    constexpr unsigned mostly = 240;
    return !input->is_empty() && input->chance(mostly) ? 1 + input->byte() : 0;
}

// An operation that returns a handle.
uint64_t answer_handle(Operation&, std::span<const Argument>)
{
    return take_handle();
}

// An operation that puts a handle into its last argument.
uint64_t answer_lookup(Operation&, std::span<const Argument> arguments)
{
    const uint32_t status = take_status();
    const uint64_t handle = take_handle();
    arguments.back().output.put(handle);
    return status;
}

// An operation that returns a text of the library's own, or null. A switch id has room behind its text.
uint64_t answer_text(Operation& operation, std::span<const Argument>)
{
    constexpr unsigned mostly = 240;
    if (input->is_empty() || !input->chance(mostly))
        return 0;
    const std::string text = take_text(*input);
    const size_t readable = operation.name == "DVS_SwitchId" ? switch_id_bytes : 0;
    void* block =
        block_of({reinterpret_cast<const uint8_t*>(text.data()), text.size()}, std::max(text.size() + 1, readable));
    kept.push_back(block);
    return reinterpret_cast<uint64_t>(block);
}

// A walk hands out handles to a callback until that has seen enough. The callback and its context are the last two
// arguments of either walk.
template <class Handle>
uint64_t answer_walk(Operation&, std::span<const Argument> arguments)
{
    const auto& callback = arguments[arguments.size() - 2];
    const auto& context = arguments[arguments.size() - 1];
    const auto function = reinterpret_cast<uint32_t (*)(Handle*, void*)>(callback.value);
    for (uint64_t handle = 1; !input->is_empty() && input->chance(240); ++handle)
        if (function(reinterpret_cast<Handle*>(handle), reinterpret_cast<void*>(context.value)) != 0)
            break;
    return 0;
}

uint64_t answer_release(Operation&, std::span<const Argument> arguments)
{
    auto* value = reinterpret_cast<void*>(arguments[0].value);
    if (value && values_out.erase(value) == 0)
        fault("a value was released that is not out");
    std::free(value);
    return 0;
}

struct Special {
    std::string_view name;
    decltype(Operation::answer) answer;
};

constexpr Special specials[] = {
    {"DVSState_SwitchForEach", answer_walk<DVSSwitch>},
    {"DVSState_GlobalPropForEach", answer_walk<DVSData>},
    {"DVSHCK_DataFree", answer_release},
    {"DVSState_HostPropLookup", answer_lookup},
    {"DVSState_GlobalPropLookup", answer_lookup},
    {"DVS_SwitchId", answer_text},
    {"DVS_ClassName", answer_text},
    {"DVSData_Name", answer_text},
};

decltype(Operation::answer) answer_of(const host::Signature& signature)
{
    for (const Special& special : specials)
        if (special.name == signature.name)
            return special.answer;
    return signature.returns_pointer() ? answer_handle : answer_status;
}

}  // namespace

void begin_platform(Input& of_execution)
{
    input = &of_execution;
}

void end_platform()
{
    for (void* block : kept)
        std::free(block);
    kept.clear();
    if (!values_out.empty())
        fault("%zu values of the switch state library were not released", values_out.size());
}

}  // namespace fuzz

namespace host {

Operation& operation(const Signature& signature)
{
    return *new Operation{signature.name, fuzz::answer_of(signature)};  // once for each operation
}

uint64_t dispatch(Operation& operation, Arguments arguments)
{
    for (const Argument& argument : arguments)
        fuzz::look_at(argument);
    return operation.answer(operation, arguments);
}

}  // namespace host
