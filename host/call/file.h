// Files that a user names.
#pragma once

#include <string>

namespace host {

// What a path names that is no regular file ("a directory", "not a regular file"), or null. A pipe is never opened: its
// reader would wait for a writer.
const char* irregular(const std::string& path);

}  // namespace host
