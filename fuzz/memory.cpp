// The interpreter's memory, up to a limit, and the module's large records.
#include "fuzz/memory.h"

#include <Python.h>
#include <sys/mman.h>

#include <cstdint>

extern "C" {
// Of AddressSanitizer, whose header not every compiler brings.
size_t __sanitizer_get_current_allocated_bytes();
void __asan_poison_memory_region(const volatile void* memory, size_t size);
void __asan_unpoison_memory_region(const volatile void* memory, size_t size);

// The linker lets the module ask for its records here.
void* __real_malloc(size_t size);
void __real_free(void* memory);
void* __wrap_malloc(size_t size);
void __wrap_free(void* memory);
}

namespace fuzz {

namespace {

constexpr PyMemAllocatorDomain domains[] = {PYMEM_DOMAIN_MEM, PYMEM_DOMAIN_OBJ};
PyMemAllocatorEx originals[2];

size_t left = SIZE_MAX;
size_t blocks;  // of the interpreter that are in use

void* counted(void* memory)
{
    blocks += memory != nullptr;
    return memory;
}

bool grants(size_t size)
{
    if (left == SIZE_MAX)
        return true;
    if (size > left) {
        left = 0;
        return false;
    }
    left -= size;
    return true;
}

void* limited_malloc(void* context, size_t size)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    return grants(size) ? counted(original->malloc(original->ctx, size)) : nullptr;
}

void* limited_calloc(void* context, size_t count, size_t size)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    return grants(count * size) ? counted(original->calloc(original->ctx, count, size)) : nullptr;
}

void* limited_realloc(void* context, void* memory, size_t size)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    if (!grants(size))
        return nullptr;
    void* moved = original->realloc(original->ctx, memory, size);
    return memory ? moved : counted(moved);
}

void counted_free(void* context, void* memory)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    blocks -= memory != nullptr;
    original->free(original->ctx, memory);
}

// --- Large records: AddressSanitizer would map and unmap each anew. One of each size is kept, with poison behind it;
// while nobody has it, its first bytes are poisoned too. ---

constexpr size_t least_large = 100'000;
constexpr size_t most_large = 32 << 20;
constexpr size_t behind = 65536;

struct LargeRecord {
    size_t size;
    void* memory;
    bool is_taken;
};

LargeRecord large_records[64];
size_t large_bytes;  // taken

void* mapped(size_t size)
{
    void* memory = mmap(nullptr, size + behind, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    __asan_poison_memory_region(static_cast<uint8_t*>(memory) + size, behind);
    return memory;
}

void* take_large(size_t size)
{
    if (size > most_large)
        return nullptr;
    for (LargeRecord& record : large_records) {
        if (!record.memory)
            record = {size, mapped(size), false};
        if (record.memory && record.size == size && !record.is_taken) {
            __asan_unpoison_memory_region(record.memory, least_large);
            record.is_taken = true;
            large_bytes += size;
            return record.memory;
        }
    }
    return nullptr;
}

bool give_large_back(void* memory)
{
    for (LargeRecord& record : large_records) {
        if (!record.memory)
            return false;
        if (record.memory == memory && record.is_taken) {
            __asan_poison_memory_region(memory, least_large);
            record.is_taken = false;
            large_bytes -= record.size;
            return true;
        }
    }
    return false;
}

}  // namespace

void hook_allocators()
{
    for (size_t i = 0; i < 2; ++i) {
        PyMem_GetAllocator(domains[i], &originals[i]);
        PyMemAllocatorEx hook = {&originals[i], limited_malloc, limited_calloc, limited_realloc, counted_free};
        PyMem_SetAllocator(domains[i], &hook);
    }
}

MemoryLimit::MemoryLimit(size_t bytes)
{
    left = bytes;
}

MemoryLimit::~MemoryLimit()
{
    left = SIZE_MAX;
}

size_t memory_in_use()
{
    return blocks + large_bytes + __sanitizer_get_current_allocated_bytes();
}

}  // namespace fuzz

void* __wrap_malloc(size_t size)
{
    void* memory = size >= fuzz::least_large ? fuzz::take_large(size) : nullptr;
    return memory ? memory : __real_malloc(size);
}

void __wrap_free(void* memory)
{
    if (!fuzz::give_large_back(memory))
        __real_free(memory);
}
