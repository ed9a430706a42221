// Stands before the system's uname in a process that preloads it: the kernel release is what CHOSEN_RELEASE says, and
// the call fails without it.
#include <sys/utsname.h>

#include <cstdio>
#include <cstdlib>

extern "C" int uname(utsname* system) noexcept
{
    const char* release = std::getenv("CHOSEN_RELEASE");
    if (!release)
        return -1;
    *system = {};
    std::snprintf(system->release, sizeof system->release, "%s", release);
    return 0;
}
