// A host in another process, which answers the calls of this one.
#include "host/link/shared_host.h"

#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "host/link/marshal.h"

namespace host {

namespace {

// Made when the library is loaded, and never destroyed: calls may come until the process ends.
SharedHost* const host_of_environment = [] {
    const char* path = std::getenv("QDP_HOST");
    return path && *path ? new SharedHost{path} : nullptr;
}();

[[maybe_unused]] const int link_fork_handlers =
    host_of_environment ? pthread_atfork([] { host_of_environment->lock(); }, [] { host_of_environment->unlock(); },
                                         [] { host_of_environment->unlock_in_child(); })
                        : 0;

uint64_t inode_of(int file)
{
    struct stat status {};
    return fstat(file, &status) == 0 ? status.st_ino : 0;
}

}  // namespace

SharedHost* SharedHost::of_this_process()
{
    return host_of_environment;
}

void SharedHost::unlock_in_child()
{
    disconnect();
    parent_ = connection_;
    mutex_.unlock();
}

bool SharedHost::is_connected() const
{
    return socket_ && inode_of(socket_->file()) == inode_;
}

void SharedHost::disconnect()
{
    if (!is_connected())
        static_cast<void>(socket_.release());  // the process has closed it, and its number is another file's
    socket_.reset();
    tokens_.clear();
}

std::string SharedHost::connect()
{
    disconnect();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.size() >= sizeof address.sun_path)
        return "the path of a socket has at most " + std::to_string(sizeof address.sun_path - 1) + " bytes";
    std::memcpy(address.sun_path, path_.c_str(), path_.size());
    const int file = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (file < 0)
        return std::strerror(errno);
    auto made = std::make_unique<link::Socket>(file);
    if (::connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return errno == ECONNREFUSED || errno == ENOENT ? "no host serves there" : std::strerror(errno);

    link::Writer hello{link::Kind::hello};
    hello.text(link::greeting);
    hello.number(std::exchange(parent_, 0));
    if (!made->send(hello.finished()))
        return "the host closed the connection";
    const auto message = made->receive(link::max_answer_bytes);
    if (!message)
        return "the host closed the connection";
    link::Reader reader{message->parts};
    if (message->kind == link::Kind::error)
        return std::string{reader.text()};
    connection_ = reader.number<uint64_t>();
    if (message->kind != link::Kind::hello || !reader.is_whole())
        return "what answers is no host";
    inode_ = inode_of(file);
    socket_ = std::move(made);
    return {};
}

uint64_t SharedHost::fail(const Signature& signature, const std::string& reason)
{
    if (!is_failure_printed_)
        std::fprintf(stderr, "qdp-host: %s: %s\n", path_.c_str(), reason.c_str());
    is_failure_printed_ = true;
    return signature.returns_pointer() ? 0 : status_refused;
}

uint64_t SharedHost::call(const Signature& signature, Arguments arguments, std::vector<void*>& steps)
{
    const std::lock_guard lock{mutex_};
    uint64_t token = 0;
    for (const Argument& argument : arguments)
        if (argument.meaning == Argument::Meaning::release) {
            values_.release(reinterpret_cast<void*>(argument.value));
            if (const auto found = tokens_.extract(argument.value))
                token = found.mapped();
        }

    link::Writer request{link::Kind::call};
    write_call(request, signature, arguments, token);
    const ByteSpan bytes = request.finished();
    if (bytes.size() > link::max_request_bytes)
        return fail(signature, std::string{signature.name} + ": the call is too large for a shared host");

    // A host that has ended since the last call has not received this call; the call is sent again to the next one.
    bool was_taken = false;
    const bool was_connected = is_connected();
    if (!was_connected || !socket_->send(bytes, &was_taken)) {
        if (was_taken)
            return fail(signature, "the host ended during a call");
        if (const std::string reason = connect(); !reason.empty())
            return fail(signature, reason);
        if (!socket_->send(bytes))
            return fail(signature, "the host ended during a call");
    }
    const auto message = socket_->receive(link::max_answer_bytes);
    if (!message) {
        disconnect();
        return fail(signature, "the host ended during a call");
    }
    link::Reader reader{message->parts};
    if (message->kind == link::Kind::error) {
        const std::string reason{reader.text()};
        disconnect();
        return fail(signature, reason);
    }
    return take(signature, reader, arguments, steps);
}

uint64_t SharedHost::take(const Signature& signature, link::Reader& reader, Arguments arguments,
                          std::vector<void*>& steps)
{
    const RecordedAnswer answer = link::read_answer(reader);
    const auto num_outputs = std::ranges::count_if(signature.roles(), is_output);
    if (!reader.is_whole() || answer.outputs.size() != static_cast<size_t>(num_outputs))
        return fail(signature, "the host sent an answer that is none");
    put_outputs(answer, arguments, values_);

    auto output = answer.outputs.begin();
    for (const Argument& argument : arguments) {
        if (argument.kind == Argument::Kind::value_output && output->handle)
            tokens_[word_of(*argument.value_output.pointer)] = *output->handle;
        if (argument.kind == Argument::Kind::output || argument.kind == Argument::Kind::value_output)
            ++output;
    }
    for (const uint64_t step : answer.steps)
        steps.push_back(reinterpret_cast<void*>(step));
    is_failure_printed_ = false;
    return answer.text ? word_of(values_.keep(readable_text(*answer.text)).data()) : answer.result;
}

}  // namespace host
