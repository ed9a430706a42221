// The table of operations, and arguments made from parameters.
#include "host/call/operations.h"

#include "platform/mac.h"
#include "platform/qdp_control.h"
#include "platform/switch_state.h"

namespace host {

namespace {

using enum Role;

constexpr Signature operations_table[] = {
#define OPERATION(name, ...) signature_of(&name, #name __VA_OPT__(, ) __VA_ARGS__),
#include "host/call/operations_qdp.def"
#include "host/call/operations_switch_state.def"
#undef OPERATION
};

Output output_at(uint64_t address, size_t capacity)
{
    return {reinterpret_cast<std::byte*>(address), address ? capacity : 0};
}

ByteSpan bytes_at(uint64_t address, size_t size)
{
    return {reinterpret_cast<const std::byte*>(address), address ? size : 0};
}

// The argument that begins with this parameter.
Argument first_half(Role role, uint64_t word, size_t target_bytes)
{
    Argument argument;
    argument.value = word;
    switch (role) {
    case text:
        argument.kind = Argument::Kind::text;
        break;
    case mac:
    case record:
        argument.kind = Argument::Kind::bytes;
        argument.bytes = bytes_at(word, role == mac ? mac_bytes : target_bytes);
        break;
    case bytes:
    case items:
        argument.kind = Argument::Kind::bytes;
        break;
    case handle_out:
        argument.meaning = Argument::Meaning::handle;
        [[fallthrough]];
    case out:
        argument.kind = Argument::Kind::output;
        argument.output = output_at(word, target_bytes);
        break;
    case buffer:
    case sized_out:
    case filled_out:
        argument.kind = Argument::Kind::output;
        argument.output = output_at(word, 0);
        break;
    case host_text:
        argument.meaning = Argument::Meaning::host_text;
        break;
    case library_value:
    case caller_value:
    case released_value:
        argument.kind = Argument::Kind::value_output;
        argument.value_output = {reinterpret_cast<const void**>(word), nullptr,
                                 role == library_value  ? ValueOutput::Owner::library
                                 : role == caller_value ? ValueOutput::Owner::caller
                                                        : ValueOutput::Owner::released};
        break;
    case handle:
        argument.meaning = Argument::Meaning::handle;
        break;
    case callback:
        argument.meaning = Argument::Meaning::callback;
        break;
    case context:
        argument.meaning = Argument::Meaning::context;
        break;
    case release:
        argument.meaning = Argument::Meaning::release;
        break;
    default:
        break;
    }
    return argument;
}

void complete(Argument& argument, Role first, Role second, uint64_t word, size_t target_bytes)
{
    argument.second_parameter = word;
    auto* words = reinterpret_cast<uint32_t*>(word);
    if (second == count)
        argument.bytes = bytes_at(argument.value, word * (first == items ? target_bytes : 1));
    else if (second == capacity)
        argument.output = output_at(argument.value, word);
    else if (second == length)
        argument.value_output.length = words;
    else {
        argument.output = output_at(argument.value, words ? *words : 0);
        argument.output.size_word = words;
        argument.output.takes_content = first == filled_out;
    }
}

}  // namespace

std::span<const Signature> signatures()
{
    return operations_table;
}

const Signature* find_signature(std::string_view name)
{
    const auto found = std::ranges::find(operations_table, name, &Signature::name);
    return found == std::end(operations_table) ? nullptr : found;
}

void make_arguments(const Signature& signature, const uint64_t* words, Argument* arguments)
{
    const auto roles = signature.roles();
    for (size_t i = 0; i < roles.size(); ++i) {
        if (is_second(roles[i]))
            complete(arguments[-1], roles[i - 1], roles[i], words[i], signature.target_bytes[i - 1]);
        else
            *arguments++ = first_half(roles[i], words[i], signature.target_bytes[i]);
    }
}

}  // namespace host
