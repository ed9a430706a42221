// Clearing of large records.
#include "core/owned.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace qdp {

void clear_large(void* memory, size_t size)
{
    // The whole pages between the edges.
    const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<uintptr_t>(memory);
    const uintptr_t first = (start + page - 1) / page * page;
    const uintptr_t end = start + size;
    const uintptr_t last = end / page * page;
    if (first >= last || madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED) != 0) {
        std::memset(memory, 0, size);
        return;
    }
    std::memset(memory, 0, first - start);
    std::memset(reinterpret_cast<void*>(last), 0, end - last);
}

}  // namespace qdp
