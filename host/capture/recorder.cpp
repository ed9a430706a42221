// The recorder: the capture file, the tokens of handles, and what is written of a call.
#include "host/capture/recorder.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <mutex>
#include <optional>

#include "host/call/hex.h"
#include "host/capture/trace.h"

namespace host {

namespace {

constexpr char file_variable[] = "QDP_HOST_CAPTURE";
constexpr uint32_t no_length = UINT32_MAX;  // stays in a value's length word when the library reports no length

// One process records into one file, from its first call on.
class CaptureFile {
public:
    CaptureFile() : path_{std::getenv(file_variable) ? std::getenv(file_variable) : ""}
    {
        if (path_.empty())
            return;
        file_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
        struct stat status {};
        if (file_ < 0 || fstat(file_, &status) != 0)
            stop(std::strerror(errno));
        else if (flock(file_, LOCK_EX | LOCK_NB) != 0)
            stop("another process records into this file");
        else if (status.st_size != 0)
            stop("the file is not empty");
        else
            write(Json::object({{capture_version_key, capture_version}}));
    }

    // A child that was forked leaves the file to its parent.
    bool is_open() const { return file_ >= 0 && getpid() == owner_; }

    // A line is written at once, so that the file is whole whatever happens to the process.
    void write(const Json& line)
    {
        const std::string text = text_of(line) + '\n';
        for (size_t written = 0; written < text.size();) {
            const ssize_t count = ::write(file_, text.data() + written, text.size() - written);
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                return stop(std::strerror(errno));
            written += static_cast<size_t>(count);
        }
    }

private:
    void stop(const char* reason)
    {
        std::fprintf(stderr, "qdp-host: %s: %s; calls are not recorded\n", path_.c_str(), reason);
        if (file_ >= 0)
            close(file_);
        file_ = -1;
    }

    std::string path_;
    int file_ = -1;
    pid_t owner_ = getpid();
};

struct Recorder {
    std::mutex mutex;
    std::optional<CaptureFile> file;  // opened at the first call
    std::map<uint64_t, uint64_t> tokens{{0, 0}};

    bool is_recording()
    {
        if (!file)
            file.emplace();
        return file->is_open();
    }
};

// Made when the library is loaded, and never destroyed: calls may come until the process ends.
Recorder& recorder = *new Recorder;

// A child that is forked while another thread records gets the lock free.
[[maybe_unused]] const int fork_handlers =
    pthread_atfork([] { recorder.mutex.lock(); }, [] { recorder.mutex.unlock(); }, [] { recorder.mutex.unlock(); });

// With the recorder's mutex held.
uint64_t token_of(uint64_t handle)
{
    return recorder.tokens.try_emplace(handle, recorder.tokens.size()).first->second;
}

uint64_t token_of(const void* handle)
{
    return token_of(reinterpret_cast<uint64_t>(handle));
}

// The content of a buffer after a successful call, as long as the library says. Zeros at the end are only counted: a
// library may leave the size word at the capacity of a buffer that is mostly empty.
Json answer_in(const Output& output, Argument::Meaning meaning)
{
    if (!output.data)
        return {};
    if (meaning == Argument::Meaning::handle) {
        const void* handle;
        std::memcpy(&handle, output.data, sizeof handle);
        return handle_json(token_of(handle));
    }
    const size_t size = output.size_word ? std::min<size_t>(*output.size_word, output.capacity) : output.capacity;
    const ByteSpan all{output.data, size};
    const auto end = std::find_if(all.rbegin(), all.rend(), [](std::byte byte) { return byte != std::byte{0}; }).base();
    const ByteSpan content{all.begin(), end};
    Json answer = Json::object({{"bytes", hex(content)}});
    if (content.size() < size)
        answer.append("zeros", size - content.size());
    return answer;
}

}  // namespace

void* RealFunction::lookup(const char* library, const char* operation)
{
    // By its soname, the library that the process has loaded is found, wherever it lies.
    void* loaded = dlopen(library, RTLD_LAZY);
    void* definition = loaded ? dlsym(loaded, operation) : nullptr;
    if (!definition)
        std::fprintf(stderr, "qdp-host: %s\n", dlerror());
    definition_.store(definition, std::memory_order_release);
    return definition;
}

RecordedCall::RecordedCall(const char* operation, Arguments arguments)
    : operation_{operation}, arguments_{arguments.begin(), arguments.end()}
{
    for (const Argument& argument : arguments_) {
        parameters_.push_back(argument.value);
        if (argument.second_parameter)
            parameters_.push_back(*argument.second_parameter);
    }
    const std::lock_guard lock{recorder.mutex};
    is_recorded_ = recorder.is_recording();
    if (!is_recorded_)
        return;
    inputs_ = inputs_json(arguments_, [](uint64_t handle) { return token_of(handle); });
    note_outputs();

    // The recorder stands between a walk and its callback. Its callback and context are parameters of one word each,
    // the context the last one.
    const auto walk = std::ranges::find(arguments_, Argument::Meaning::callback, &Argument::meaning);
    if (walk != arguments_.end() && walk->value != 0) {
        callback_ = reinterpret_cast<uint32_t (*)(void*, void*)>(walk->value);
        context_ = reinterpret_cast<void*>(parameters_.back());
        parameters_.rbegin()[1] = reinterpret_cast<uint64_t>(&step);
        parameters_.rbegin()[0] = reinterpret_cast<uint64_t>(this);
    }
}

uint32_t RecordedCall::step(void* handle, void* call)
{
    auto& self = *static_cast<RecordedCall*>(call);
    {
        const std::lock_guard lock{recorder.mutex};
        self.steps_.push_back(token_of(handle));
    }
    return self.callback_(handle, self.context_);
}

void RecordedCall::note_outputs()
{
    for (const Argument& argument : arguments_) {
        Before before{};
        if (argument.kind == Argument::Kind::value_output) {
            before.pointer = argument.value ? *argument.value_output.pointer : nullptr;
            before.length = argument.value_output.length ? *argument.value_output.length : no_length;
        } else if (argument.kind == Argument::Kind::output && argument.output.size_word) {
            before.length = *argument.output.size_word;
        }
        before_.push_back(before);
    }
}

// A failed call leaves its buffers undefined; its size words may still be set.
Json RecordedCall::outputs(bool is_success) const
{
    Json outputs = Json::list({});
    for (size_t i = 0; i < arguments_.size(); ++i) {
        const Argument& argument = arguments_[i];
        const Before& before = before_[i];
        Json answer;
        const uint32_t* length = nullptr;
        if (argument.kind == Argument::Kind::output) {
            length = argument.output.size_word;
            if (is_success)
                answer = answer_in(argument.output, argument.meaning);
        } else if (argument.kind == Argument::Kind::value_output) {
            length = argument.value_output.length;
            const void* value = argument.value ? *argument.value_output.pointer : nullptr;
            if (value && (is_success || value != before.pointer)) {
                const auto* bytes = static_cast<const std::byte*>(value);
                const bool is_text = !length || *length == no_length;
                const size_t size = is_text ? std::strlen(static_cast<const char*>(value)) + 1 : *length;
                answer = Json::object({{"bytes", hex({bytes, size})}});
            }
        } else {
            continue;
        }
        if (length && *length != no_length && (*length != before.length || !answer.is_null())) {
            if (answer.is_null())
                answer = Json::object({});
            answer.append("size", *length);
        }
        outputs.add(std::move(answer));
    }
    return outputs;
}

void RecordedCall::write(bool is_success, const Json& result)
{
    Json line =
        Json::object({{"operation", operation_}, {"in", inputs_}, {"out", outputs(is_success)}, {"result", result}});
    if (callback_)
        line.append("steps", Json::Array(steps_.begin(), steps_.end()));
    if (recorder.is_recording())
        recorder.file->write(line);
}

void RecordedCall::returned()
{
    const std::lock_guard lock{recorder.mutex};
    if (is_recorded_)
        write(true, {});
}

void RecordedCall::returned_status(uint32_t status)
{
    const std::lock_guard lock{recorder.mutex};
    if (is_recorded_)
        write(status == status_success, status);
}

void RecordedCall::returned_text(const char* text)
{
    const std::lock_guard lock{recorder.mutex};
    if (is_recorded_)
        write(text != nullptr, text ? text_json(text) : Json());
}

void RecordedCall::returned_handle(const void* handle)
{
    const std::lock_guard lock{recorder.mutex};
    if (is_recorded_)
        write(handle != nullptr, handle_json(token_of(handle)));
}

}  // namespace host
