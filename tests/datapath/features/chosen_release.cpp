// Stands before the system's uname in a process that preloads it: the kernel release is what CHOSEN_RELEASE says.
// Without it the call fails, and leaves a release behind that is not to be believed.
#include <sys/utsname.h>

#include <cstdio>
#include <cstdlib>

extern "C" int uname(utsname* system) noexcept
{
    const char* chosen = std::getenv("CHOSEN_RELEASE");
    *system = {};
    std::snprintf(system->release, sizeof system->release, "%s", chosen ? chosen : "9.9.9");
    return chosen ? 0 : -1;
}
