// Files that a user names.
#include "host/call/file.h"

#include <sys/stat.h>

namespace host {

const char* irregular(const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode))
        return nullptr;
    return S_ISDIR(status.st_mode) ? "a directory" : "not a regular file";
}

}  // namespace host
