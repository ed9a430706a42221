// The socket of a shared host, and the threads that serve its clients.
#pragma once

#include <string>

namespace host::share {

// Opens the socket, for its owner alone. Returns what is wrong, or an empty text.
std::string listen(const std::string& path);

// Serves clients, until SIGTERM, SIGINT or SIGHUP, or until nobody holds the other end of a pipe; -1 is none. Then the
// socket is gone.
void serve(int pipe);

}  // namespace host::share
