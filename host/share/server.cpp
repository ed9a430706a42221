// The socket of a shared host, and the threads that serve its clients.
#include "host/share/server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

#include "host/control.h"
#include "host/share/connection.h"

namespace host::share {

namespace {

constexpr size_t max_clients = 512;
constexpr rlim_t wanted_files = 1024;
constexpr std::chrono::seconds time_to_end{1};  // for calls that have not returned

struct Server {
    std::string path;
    struct stat socket {};  // at the path; another one there is another host's
    int listener = -1;
    int signals = -1;
    uint64_t clients_so_far = 0;

    std::mutex mutex;
    std::set<Connection*> clients;
};

// Never destroyed: threads may serve until the process ends.
Server& server = *new Server;

// Keeps other servers from the folder of a socket, for as long as it lives.
class LockedFolder {
public:
    explicit LockedFolder(const std::string& path)
    {
        const size_t slash = path.rfind('/');
        const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
        file_ = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (file_ >= 0)
            flock(file_, LOCK_EX);
    }
    ~LockedFolder()
    {
        if (file_ >= 0)
            close(file_);
    }
    LockedFolder(const LockedFolder&) = delete;
    LockedFolder& operator=(const LockedFolder&) = delete;
    bool exists() const { return file_ >= 0; }

private:
    int file_;
};

std::string wrong(const std::string& path, const char* reason)
{
    return path + ": " + reason;
}

// Removes the socket of a server that was killed. Returns why the path cannot be used, or an empty text.
std::string make_room(const std::string& path, const sockaddr_un& address)
{
    struct stat found {};
    if (stat(path.c_str(), &found) != 0)
        return errno == ENOENT ? "" : wrong(path, std::strerror(errno));
    if (!S_ISSOCK(found.st_mode))
        return wrong(path, "a file that is no socket is there; name another one");
    const link::Socket probe{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    if (connect(probe.file(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return wrong(path, "another host serves there; name another socket");
    if (errno != ECONNREFUSED || unlink(path.c_str()) != 0)
        return wrong(path, std::strerror(errno));
    return {};
}

void allow_files()
{
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < wanted_files) {
        files.rlim_cur = std::min(wanted_files, files.rlim_max);
        setrlimit(RLIMIT_NOFILE, &files);
    }
}

void leave(Connection* client)
{
    const std::lock_guard lock{server.mutex};
    server.clients.erase(client);
}

void stop_clients()
{
    const std::lock_guard lock{server.mutex};
    for (Connection* client : server.clients)
        client->stop();
}

bool has_clients()
{
    const std::lock_guard lock{server.mutex};
    return !server.clients.empty();
}

void serve_client(Connection* served)
{
    const std::unique_ptr<Connection> client{served};
    try {
        client->serve();
    } catch (const std::exception&) {
        // Without memory for a call, the connection ends.
    }
    leave(client.get());
}

void accept_client()
{
    const int file = accept4(server.listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (file < 0) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOMEM)
            std::this_thread::sleep_for(std::chrono::milliseconds{10});
        return;
    }
    auto client = std::make_unique<Connection>(file, ++server.clients_so_far);
    {
        const std::lock_guard lock{server.mutex};
        if (server.clients.size() >= max_clients)
            return client->refuse("the host serves as many processes as it may");
        server.clients.insert(client.get());
    }
    try {
        std::thread{serve_client, client.get()}.detach();
        static_cast<void>(client.release());
    } catch (const std::system_error&) {
        leave(client.get());
    }
}

}  // namespace

std::string listen(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return wrong(path, "the path of a socket has at most 107 bytes; name a shorter one");
    std::memcpy(address.sun_path, path.c_str(), path.size());

    const LockedFolder folder{path};
    if (!folder.exists())
        return wrong(path, std::strerror(errno));
    if (const std::string reason = make_room(path, address); !reason.empty())
        return reason;

    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&ends, signal);
    sigprocmask(SIG_BLOCK, &ends, nullptr);  // from here on, and in all threads to come

    server.signals = signalfd(-1, &ends, SFD_CLOEXEC);
    server.listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const mode_t mask = umask(0177);
    const bool is_bound = bind(server.listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    umask(mask);
    if (!is_bound || ::listen(server.listener, 128) != 0 || server.signals < 0)
        return wrong(path, std::strerror(errno));
    server.path = path;
    stat(path.c_str(), &server.socket);
    server.clients_so_far = static_cast<uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
    allow_files();
    return {};
}

void serve(int pipe)
{
    pollfd awaited[] = {{server.listener, POLLIN, 0}, {server.signals, POLLIN, 0}, {pipe, 0, 0}};
    while (awaited[1].revents == 0 && awaited[2].revents == 0) {
        poll(awaited, std::size(awaited), -1);
        if (awaited[0].revents != 0)
            accept_client();
    }
    {
        const LockedFolder folder{server.path};
        struct stat found {};
        if (stat(server.path.c_str(), &found) == 0 && found.st_ino == server.socket.st_ino)
            unlink(server.path.c_str());
    }
    close(server.listener);

    stop_clients();
    const auto end = std::chrono::steady_clock::now() + time_to_end;
    while (has_clients() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
}

}  // namespace host::share

namespace {

std::string wrong_with_socket;

}  // namespace

const char* qdp_host_listen(const char* path)
{
    wrong_with_socket = host::share::listen(path);
    return wrong_with_socket.empty() ? nullptr : wrong_with_socket.c_str();
}

void qdp_host_serve(int pipe)
{
    host::share::serve(pipe);
}
