// Replay: reads a capture file, and answers from it.
#include "host/capture/replay.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>

#include "host/capture/trace.h"
#include "host/hex.h"
#include "platform/switch_state.h"

namespace host {

namespace {

using Json = nlohmann::json;

// What makes two calls equal.
std::string key_of(const std::string& operation, const Json& inputs)
{
    return operation + inputs.dump();
}

// --- A line's parts; each throws BrokenCapture, or nlohmann's exception, for something else ---

uint64_t number_in(const Json& json, uint64_t most)
{
    if (!json.is_number_unsigned() || json.get<uint64_t>() > most)
        throw BrokenCapture{"expected a number up to " + std::to_string(most) + ", not " + json.dump()};
    return json.get<uint64_t>();
}

uint64_t handle_in(const Json& json)
{
    return number_in(json.at("handle"), UINT64_MAX);
}

Value bytes_in(const Json& json)
{
    auto bytes = from_hex(json.at("bytes").get<std::string>());
    if (!bytes)
        throw BrokenCapture{"\"bytes\" are not hexadecimal digits"};
    return std::move(*bytes);
}

RecordedAnswer::Output output_in(const Json& json)
{
    RecordedAnswer::Output output;
    if (json.is_null())
        return output;
    if (json.contains("handle"))
        output.handle = handle_in(json);
    if (json.contains("bytes"))
        output.content = bytes_in(json);
    if (json.contains("zeros"))
        output.zeros = number_in(json["zeros"], UINT32_MAX);
    if (json.contains("size"))
        output.size = static_cast<uint32_t>(number_in(json["size"], UINT32_MAX));
    return output;
}

// A text with its NUL. Whoever reads a switch id looks at so many bytes, however short it is.
Value readable_text(Value text)
{
    text.resize(std::max(text.size() + 1, switch_id_bytes));
    return text;
}

void take_result(const Json& result, RecordedAnswer& answer)
{
    if (result.is_string())
        answer.text = readable_text(value_of(std::as_bytes(std::span{result.get_ref<const std::string&>()})));
    else if (result.is_object() && result.contains("bytes"))
        answer.text = readable_text(bytes_in(result));
    else if (result.is_object())
        answer.result = handle_in(result);
    else if (!result.is_null())
        answer.result = number_in(result, UINT32_MAX);
}

// --- An answer ---

void put(const Output& output, const RecordedAnswer::Output& recorded)
{
    if (recorded.handle)
        output.write(0, bytes_of(*recorded.handle));
    if (recorded.content) {
        output.write(0, *recorded.content);
        if (output.data && recorded.content->size() < output.capacity)
            std::memset(output.data + recorded.content->size(), 0,
                        std::min(recorded.zeros, output.capacity - recorded.content->size()));
    }
    if (recorded.size)
        output.reported(*recorded.size);
}

void put(const ValueOutput& output, const RecordedAnswer::Output& recorded)
{
    if (recorded.content && output.owner == ValueOutput::Owner::library)
        *output.pointer = recorded.content->data();
    else if (recorded.content)
        hand_out({output.pointer, nullptr, output.owner}, *recorded.content);
    if (recorded.size && output.length)
        *output.length = *recorded.size;
}

void put_outputs(const RecordedAnswer& answer, std::initializer_list<Argument> arguments)
{
    auto output = answer.outputs.begin();
    for (const Argument& argument : arguments) {
        if (output == answer.outputs.end())
            return;
        if (argument.kind == Argument::Kind::output)
            put(argument.output, *output++);
        else if (argument.kind == Argument::Kind::value_output)
            put(argument.handed, *output++);
    }
}

// The context is the argument behind the callback.
void walk(const RecordedAnswer& answer, std::initializer_list<Argument> arguments)
{
    const auto called = std::ranges::find(arguments, Argument::Meaning::callback, &Argument::meaning);
    if (called == arguments.end())
        return;
    const auto callback = reinterpret_cast<uint32_t (*)(void* handle, void* context)>(called->value);
    auto* context = reinterpret_cast<void*>(called[1].value);
    for (const uint64_t handle : answer.steps)
        if (callback(reinterpret_cast<void*>(handle), context) != 0)
            return;
}

}  // namespace

Replay::Replay(const std::string& path) : path_{path}
{
    std::ifstream file{path};
    if (!file)
        throw BrokenCapture{path + ": " + std::strerror(errno)};

    size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        // A line that a process wrote in vain is the last one, and has no end.
        if (file.eof() && !Json::accept(line)) {
            std::fprintf(stderr, "qdp-host: %s: line %zu is cut off, and left out\n", path.c_str(), number);
            break;
        }
        try {
            if (number > 1)
                add(line);
            else if (Json::parse(line).at(capture_version_key) != capture_version)
                throw BrokenCapture{"a capture of a version that is not known here"};
        } catch (const std::exception& error) {
            throw BrokenCapture{path + ": line " + std::to_string(number) + ": " + error.what()};
        }
    }
    if (number == 0)
        throw BrokenCapture{path + ": line 1: not a capture: the file is empty"};
}

void Replay::add(const std::string& line)
{
    const Json call = Json::parse(line);
    RecordedAnswer answer;
    for (const Json& output : call.at("out"))
        answer.outputs.push_back(output_in(output));
    take_result(call.at("result"), answer);
    if (call.contains("steps"))
        for (const Json& step : call["steps"])
            answer.steps.push_back(number_in(step, UINT64_MAX));

    const std::string operation = call.at("operation").get<std::string>();
    if (!is_operation(operation))
        throw BrokenCapture{"the platform has no operation " + Json(operation).dump()};
    calls_[key_of(operation, call.at("in"))].answers.push_back(std::move(answer));
}

void Replay::rewind()
{
    for (auto& [key, recorded] : calls_)
        recorded.next = 0;
    unknown_.clear();
}

uint64_t Replay::answer(const std::string& operation, bool returns_pointer, std::initializer_list<Argument> arguments)
{
    // A value that is given back was handed out here, not where the calls were recorded.
    for (const Argument& argument : arguments)
        if (argument.meaning == Argument::Meaning::given_back) {
            release(reinterpret_cast<void*>(argument.value));
            return success;
        }

    const std::string key = key_of(operation, inputs_json(arguments, [](uint64_t handle) { return handle; }));
    const auto found = calls_.find(key);
    if (found == calls_.end()) {
        if (unknown_.insert(key).second)
            std::fprintf(stderr, "qdp-host: %s: not recorded: %s\n", path_.c_str(), key.c_str());
        return returns_pointer ? 0 : refused;
    }

    Recorded& recorded = found->second;
    const RecordedAnswer& answer = recorded.answers[recorded.next];
    if (recorded.next + 1 < recorded.answers.size())
        ++recorded.next;

    put_outputs(answer, arguments);
    walk(answer, arguments);
    return answer.text ? reinterpret_cast<uint64_t>(answer.text->data()) : answer.result;
}

}  // namespace host
