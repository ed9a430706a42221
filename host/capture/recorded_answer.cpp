// What one call brought back, and how it gets into the caller's outputs.
#include "host/capture/recorded_answer.h"

#include "platform/switch_state.h"

namespace host {

namespace {

void put(const Output& output, const RecordedAnswer::Output& recorded)
{
    if (recorded.handle)
        output.write(0, bytes_of(*recorded.handle));
    if (recorded.content) {
        output.write(0, *recorded.content);
        const size_t end = recorded.content->size();
        if (recorded.zeros > 0 && end < output.capacity)
            output.write(end, Value(std::min(recorded.zeros, output.capacity - end)));
    }
    if (recorded.size)
        output.set_size(*recorded.size);
}

void put(const ValueOutput& output, const RecordedAnswer::Output& recorded, Values& values)
{
    if (recorded.content)
        values.put({output.pointer, nullptr, output.owner}, *recorded.content);
    if (recorded.size && output.length)
        *output.length = *recorded.size;
}

}  // namespace

Value readable_text(Value text)
{
    text.resize(std::max(text.size() + 1, switch_id_bytes));
    return text;
}

void put_outputs(const RecordedAnswer& answer, Arguments arguments, Values& values)
{
    auto output = answer.outputs.begin();
    for (const Argument& argument : arguments) {
        if (argument.kind == Argument::Kind::output)
            put(argument.output, *output++);
        else if (argument.kind == Argument::Kind::value_output)
            put(argument.value_output, *output++, values);
    }
}

}  // namespace host
