// A host in another process, which answers the calls of this one.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "host/call/operations.h"
#include "host/call/values.h"
#include "host/link/message.h"

namespace host {

class SharedHost {
public:
    // The one that QDP_HOST named when the stand-ins were loaded, or null.
    static SharedHost* of_this_process();

    explicit SharedHost(std::string path) : path_{std::move(path)} {}

    // Answers a call as `answer` does; it fails where the host cannot be reached, which is printed once. Calls of
    // several threads follow each other.
    uint64_t call(const Signature& signature, Arguments arguments, std::vector<void*>& steps);

    // Around a fork: the child gets a connection of its own, which knows what that of its parent knew.
    void lock() { mutex_.lock(); }
    void unlock() { mutex_.unlock(); }
    void unlock_in_child();

private:
    bool is_connected() const;
    void disconnect();
    std::string connect();  // why it failed, or empty
    uint64_t fail(const Signature& signature, const std::string& reason);
    uint64_t take(const Signature& signature, link::Reader& reader, Arguments arguments, std::vector<void*>& steps);

    std::string path_;
    std::mutex mutex_;
    std::unique_ptr<link::Socket> socket_;
    uint64_t inode_ = 0;  // of the socket: a process may close the files that it does not know, and use their numbers
    uint64_t connection_ = 0;  // its number at the host
    uint64_t parent_ = 0;      // after a fork, the number of the parent's connection
    Values values_;
    std::map<uint64_t, uint64_t> tokens_;  // of the values that the host keeps, by their addresses here
    bool is_failure_printed_ = false;
};

}  // namespace host
