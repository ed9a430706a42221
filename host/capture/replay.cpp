// Replay: reads and checks a capture file, and answers from it.
#include "host/capture/replay.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>

#include "host/call/file.h"
#include "host/call/hex.h"
#include "host/capture/trace.h"

namespace host {

namespace {

// What makes two calls equal.
std::string key_of(std::string_view operation, const Json& inputs)
{
    return std::string{operation} + text_of(inputs);
}

// --- The parts of a line; each throws BrokenCapture for something that no recorder writes ---

[[noreturn]] void refuse(const std::string& expected, const Json& found)
{
    const std::string shown = found.array() ? "an array" : found.object() ? "an object" : text_of(found);
    throw BrokenCapture{"expected " + expected + ", not " + shown};
}

uint64_t number_in(const Json& json, uint64_t max)
{
    const uint64_t* number = json.natural();
    if (!number || *number > max)
        refuse("a number up to " + std::to_string(max), json);
    return *number;
}

const Json& member(const Json& object, const char* key)
{
    const Json* found = object.find(key);
    if (!found)
        throw BrokenCapture{"expected an object with \"" + std::string{key} + '"'};
    return *found;
}

const Json::Array& array_in(const Json& line, const char* key)
{
    const Json& array = member(line, key);
    if (!array.array())
        refuse('"' + std::string{key} + "\" to be an array", array);
    return *array.array();
}

void expect_keys(const Json& object, std::initializer_list<std::string_view> known)
{
    for (const auto& [key, value] : *object.object())
        if (std::ranges::find(known, key) == known.end())
            throw BrokenCapture{"unknown key " + text_of(key)};
}

uint64_t handle_in(const Json& json)
{
    const Json& handle = member(json, "handle");
    expect_keys(json, {"handle"});
    return number_in(handle, UINT64_MAX);
}

Value bytes_in(const Json& json)
{
    const Json& digits = member(json, "bytes");
    if (!digits.text())
        refuse("\"bytes\" to be a text", digits);
    auto bytes = from_hex(*digits.text());
    if (!bytes)
        throw BrokenCapture{"\"bytes\" are not hexadecimal digits"};
    return std::move(*bytes);
}

RecordedAnswer::Output output_in(const Json& json)
{
    RecordedAnswer::Output output;
    if (json.is_null())
        return output;
    if (!json.object())
        refuse("an output to be an object or null", json);
    expect_keys(json, {"handle", "bytes", "zeros", "size"});
    if (json.find("handle"))
        output.handle = handle_in(json);
    if (json.find("bytes"))
        output.content = bytes_in(json);
    if (const Json* zeros = json.find("zeros"))
        output.zeros = number_in(*zeros, UINT32_MAX);
    if (const Json* size = json.find("size"))
        output.size = static_cast<uint32_t>(number_in(*size, UINT32_MAX));
    return output;
}

Value text_in(const Json& json)
{
    if (const std::string* text = json.text())
        return value_of(std::as_bytes(std::span{*text}));
    Value bytes = bytes_in(json);
    expect_keys(json, {"bytes"});
    return bytes;
}

void parse_result(const Json& result, ResultKind kind, RecordedAnswer& answer)
{
    switch (kind) {
    case ResultKind::none:
        if (!result.is_null())
            refuse("\"result\" to be null", result);
        return;
    case ResultKind::status:
        answer.result = number_in(result, UINT32_MAX);
        return;
    case ResultKind::text:
        if (!result.is_null())
            answer.text = readable_text(text_in(result));
        return;
    case ResultKind::handle:
        if (!result.is_null())
            answer.result = handle_in(result);
        return;
    }
}

// --- Whether they fit the operation ---

void check_input(Role role, const Json& input)
{
    switch (role) {
    case Role::in:
    case Role::host_text:
        number_in(input, UINT64_MAX);
        break;
    case Role::handle:
        handle_in(input);
        break;
    case Role::text:
        if (!input.is_null())
            text_in(input);
        break;
    default:
        if (!input.is_null())
            bytes_in(input);
        break;
    }
}

void check_output(Role role, const RecordedAnswer::Output& output, bool is_success)
{
    const bool is_value = is_value_output(role);
    if (output.handle && role != Role::handle_out)
        throw BrokenCapture{"a \"handle\" in an output that receives none"};
    if (output.content && role == Role::handle_out)
        throw BrokenCapture{"\"bytes\" in an output that receives a handle"};
    if (output.size && role != Role::sized_out && role != Role::filled_out && !is_value)
        throw BrokenCapture{"a \"size\" in an output that has none"};
    if (output.zeros != 0 && (is_value || !output.content))
        throw BrokenCapture{"\"zeros\" without \"bytes\" before them"};
    if (!is_value)
        return;
    const size_t held = output.content ? output.content->size() : 0;
    if (output.size && *output.size > held && (output.content || is_success))
        throw BrokenCapture{"\"size\" " + std::to_string(*output.size) + " beyond " + std::to_string(held) + " bytes"};
    if (output.content && !output.size && std::ranges::find(*output.content, std::byte{0}) == output.content->end())
        throw BrokenCapture{"a value without \"size\" and without a NUL at its end"};
}

void check_count(const char* key, size_t expected, size_t found)
{
    if (expected != found)
        throw BrokenCapture{"expected \"" + std::string{key} + "\" with " + std::to_string(expected) +
                            " entries, not " + std::to_string(found)};
}

void check_inputs(const Signature& signature, const Json::Array& inputs)
{
    std::vector<Role> roles;
    std::ranges::copy_if(signature.roles(), std::back_inserter(roles), is_recorded_input);
    check_count("in", roles.size(), inputs.size());
    for (size_t i = 0; i < roles.size(); ++i)
        check_input(roles[i], inputs[i]);
}

void check_answer(const Signature& signature, const RecordedAnswer& answer)
{
    std::vector<Role> roles;
    std::ranges::copy_if(signature.roles(), std::back_inserter(roles), is_output);
    check_count("out", roles.size(), answer.outputs.size());
    const bool is_success = signature.result != ResultKind::status || answer.result == status_success;
    for (size_t i = 0; i < roles.size(); ++i)
        check_output(roles[i], answer.outputs[i], is_success);
}

// --- The file ---

// None for a text that is no JSON.
std::optional<Json> parsed_or_none(const std::string& text)
{
    try {
        return Json::parsed(text);
    } catch (const InputError&) {
        return std::nullopt;
    }
}

void check_header(const std::string& line)
{
    const auto header = parsed_or_none(line);
    const Json* version = header ? header->find(capture_version_key) : nullptr;
    if (!version)
        throw BrokenCapture{"not a capture"};
    if (!version->natural() || *version->natural() != capture_version)
        throw BrokenCapture{"a capture of a version that is not known here"};
}

}  // namespace

Replay::Replay(const std::string& path) : path_{path}
{
    if (const char* kind = irregular(path))
        throw BrokenCapture{path + ": not a capture: " + kind};
    std::ifstream file{path};
    if (!file)
        throw BrokenCapture{path + ": " + std::strerror(errno)};

    size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        // A process that ended while it recorded leaves a last line without its end.
        if (number > 1 && file.eof() && !parsed_or_none(line)) {
            truncated_line_ = number;
            break;
        }
        try {
            if (number == 1)
                check_header(line);
            else
                add(line);
        } catch (const std::exception& error) {
            throw BrokenCapture{path + ": line " + std::to_string(number) + ": " + error.what()};
        }
    }
    if (number == 0)
        throw BrokenCapture{path + ": line 1: not a capture: the file is empty"};
}

void Replay::print_truncated_line() const
{
    if (truncated_line_)
        std::fprintf(stderr, "qdp-host: %s: line %zu is cut off, and left out\n", path_.c_str(), *truncated_line_);
}

void Replay::add(const std::string& line)
{
    const Json call = Json::parsed(line);
    const Json& name = member(call, "operation");
    if (!name.text())
        refuse("\"operation\" to be a name", name);
    const Signature* signature = find_signature(*name.text());
    if (!signature)
        throw BrokenCapture{"the platform has no operation " + text_of(name)};

    RecordedAnswer answer;
    for (const Json& output : array_in(call, "out"))
        answer.outputs.push_back(output_in(output));
    parse_result(member(call, "result"), signature->result, answer);
    if (call.find("steps")) {
        if (std::ranges::find(signature->roles(), Role::callback) == signature->roles().end())
            throw BrokenCapture{"\"steps\" of an operation that walks over nothing"};
        for (const Json& step : array_in(call, "steps"))
            answer.steps.push_back(number_in(step, UINT64_MAX));
    }
    const Json::Array& inputs = array_in(call, "in");
    check_inputs(*signature, inputs);
    check_answer(*signature, answer);
    calls_[key_of(signature->name, inputs)].answers.push_back(std::move(answer));
}

uint64_t Replay::answer(const Signature& signature, Arguments arguments, Values& values, std::vector<void*>& steps)
{
    // A value that is given back comes from this process, not from the one that was recorded.
    for (const Argument& argument : arguments)
        if (argument.meaning == Argument::Meaning::release) {
            values.release(reinterpret_cast<void*>(argument.value));
            return status_success;
        }

    const std::string key = key_of(signature.name, inputs_json(arguments, [](uint64_t handle) { return handle; }));
    const auto found = calls_.find(key);
    if (found == calls_.end()) {
        if (unknown_.insert(key).second)
            std::fprintf(stderr, "qdp-host: %s: not recorded: %s\n", path_.c_str(), key.c_str());
        return signature.returns_pointer() ? 0 : status_refused;
    }

    Recorded& recorded = found->second;
    const RecordedAnswer& answer = recorded.answers[recorded.next];
    if (recorded.next + 1 < recorded.answers.size())
        ++recorded.next;

    put_outputs(answer, arguments, values);
    for (const uint64_t handle : answer.steps)
        steps.push_back(reinterpret_cast<void*>(handle));
    return answer.text ? word_of(answer.text->data()) : answer.result;
}

}  // namespace host
