// The interpreter's memory: how much of it an execution may ask for, and whether what it took is given back.
#pragma once

#include <cstddef>

namespace fuzz {

// Puts the limit below the interpreter, which is not yet initialised.
void hook_allocators();

// While one of these lives, the interpreter's requests fail once they exceed so many bytes in all. An answer that
// counts 2^32 entries ends in want of memory then, soon.
class MemoryLimit {
public:
    explicit MemoryLimit(size_t bytes);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
};

// The interpreter's blocks and the bytes of the module and the platform that are in use; their sum grows by whatever is
// lost.
size_t memory_in_use();

}  // namespace fuzz
