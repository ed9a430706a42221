// The scenarios that are built in, which go by their names, and the version of the build.
#pragma once

namespace host::scenario {

struct BuiltIn {
    const char* name;
    const char* text;
};
extern const BuiltIn built_in[3];

extern const char version[];

}  // namespace host::scenario
