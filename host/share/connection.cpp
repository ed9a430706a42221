// One client of a shared host: its calls, and what the host holds for it.
#include "host/share/connection.h"

#include <sys/socket.h>

#include <algorithm>
#include <map>

#include "host/link/marshal.h"
#include "host/share/control_calls.h"

namespace host::share {

namespace {

// Of one client: values that it has not given back.
constexpr size_t max_unreleased = 65'536;
constexpr size_t max_unreleased_bytes = 16 << 20;

// All that have said hello, by their numbers; with the process locked.
std::map<uint64_t, Connection*>& connections()
{
    static auto& made = *new std::map<uint64_t, Connection*>;
    return made;
}

Operation& operation_of(const Signature& signature)
{
    static auto* slots = new OperationSlot[signatures().size()];
    return slots[&signature - signatures().data()].of(signature);
}

bool returns_value(const Signature& signature)
{
    return std::ranges::find(signature.roles(), Role::released_value) != signature.roles().end();
}

}  // namespace

Connection::~Connection()
{
    forget_client(number_);
    const LockedProcess process;
    connections().erase(number_);
    caller_.values.release_all();
}

void Connection::stop()
{
    shutdown(socket_.file(), SHUT_RDWR);
}

void Connection::refuse(std::string_view reason)
{
    link::Writer writer{link::Kind::error};
    writer.text(reason);
    socket_.send(writer.finished());
}

bool Connection::greet()
{
    const auto message = socket_.receive(link::max_request_bytes, false);
    if (!message)
        return false;
    link::Reader reader{message->parts};
    const bool is_known = message->kind == link::Kind::hello && reader.text() == link::greeting;
    const auto parent = reader.number<uint64_t>();
    if (!is_known || !reader.is_whole()) {
        refuse("the host is of another version than the stand-ins of this process");
        return false;
    }
    {
        const LockedProcess process;
        const auto found = connections().find(parent);
        caller_.loaded =
            found != connections().end() ? found->second->caller_.loaded : std::make_shared<const LoadedSwitches>();
        connections()[number_] = this;
    }
    link::Writer writer{link::Kind::hello};
    writer.number(number_);
    return socket_.send(writer.finished());
}

void Connection::serve()
{
    socket_.limit_waits();
    if (!greet())
        return;
    while (const auto message = socket_.receive(link::max_request_bytes)) {
        bool is_answered = false;
        if (message->kind == link::Kind::call)
            is_answered = answer_call(message->parts);
        else if (message->kind == link::Kind::control)
            is_answered = answer_control(message->parts);
        else
            refuse("a message of an unknown kind");
        if (!is_answered)
            return;
    }
}

bool Connection::answer_call(ByteSpan parts)
{
    link::Reader reader{parts};
    link::ReceivedCall call{reader};
    if (!call.signature()) {
        refuse("a call that no stand-in makes");
        return false;
    }
    const Signature& signature = *call.signature();
    for (Argument& argument : call.arguments())
        if (argument.meaning == Argument::Meaning::release &&
            !caller_.values.is_held(reinterpret_cast<void*>(argument.value)))
            argument.value = 0;  // of a connection that has ended

    Operation& operation = operation_of(signature);
    RecordedAnswer answer;
    Walk walk;
    const bool has_room =
        caller_.values.num_unreleased() < max_unreleased && caller_.values.unreleased_bytes() < max_unreleased_bytes;
    if (!has_room && returns_value(signature)) {
        answer.result = operation.failed(status_refused);
        answer.outputs = call.outputs(caller_.values);
    } else {
        LockedProcess process;
        answer.result = host::answer(process, operation, call.arguments(), caller_, walk);
        answer.outputs = call.outputs(caller_.values);
        if (signature.result == ResultKind::text && answer.result != 0) {
            const auto text = caller_.values.text_at(reinterpret_cast<const char*>(answer.result));
            answer.text = value_of(std::as_bytes(std::span{text}));
        }
        caller_.values.forget_kept();
    }
    for (void* handle : walk.handles)
        answer.steps.push_back(reinterpret_cast<uint64_t>(handle));

    link::Writer writer{link::Kind::answer};
    write_answer(writer, answer);
    return socket_.send(writer.finished());
}

bool Connection::answer_control(ByteSpan parts)
{
    link::Reader reader{parts};
    const std::string_view request = reader.text();
    link::Writer writer{link::Kind::reply};
    writer.text(control_reply(request, number_));
    return socket_.send(writer.finished());
}

size_t num_unreleased_of_clients()
{
    const LockedProcess process;
    size_t count = 0;
    for (const auto& [number, connection] : connections())
        count += connection->num_unreleased();
    return count;
}

}  // namespace host::share
