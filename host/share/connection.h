// One client of a shared host: its calls, and what the host holds for it.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "host/link/message.h"
#include "host/process/process.h"

namespace host::share {

class Connection {
public:
    Connection(int file, uint64_t number) : socket_{file}, number_{number} {}
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Answers until the client ends, breaks the rules, or `stop` is called.
    void serve();
    void stop();

    // Says why the client is not served.
    void refuse(std::string_view reason);

    size_t num_unreleased() const { return caller_.values.num_unreleased(); }

private:
    bool greet();
    bool answer_call(ByteSpan parts);
    bool answer_control(ByteSpan parts);

    link::Socket socket_;
    const uint64_t number_;
    Caller caller_;  // changed with the process locked, for others to look at
};

// How many values of the switch state library clients hold.
size_t num_unreleased_of_clients();

}  // namespace host::share
