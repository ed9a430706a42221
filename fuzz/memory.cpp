// The interpreter's memory, from malloc and up to a limit.
#include "fuzz/memory.h"

#include <Python.h>

#include <cstdint>

// Of AddressSanitizer, whose header not every compiler brings.
extern "C" size_t __sanitizer_get_current_allocated_bytes();

namespace fuzz {

namespace {

constexpr PyMemAllocatorDomain domains[] = {PYMEM_DOMAIN_MEM, PYMEM_DOMAIN_OBJ};
PyMemAllocatorEx originals[2];

size_t left = SIZE_MAX;

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
    return grants(size) ? original->malloc(original->ctx, size) : nullptr;
}

void* limited_calloc(void* context, size_t count, size_t size)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    return grants(count * size) ? original->calloc(original->ctx, count, size) : nullptr;
}

void* limited_realloc(void* context, void* memory, size_t size)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    return grants(size) ? original->realloc(original->ctx, memory, size) : nullptr;
}

void plain_free(void* context, void* memory)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    original->free(original->ctx, memory);
}

}  // namespace

void hook_allocators()
{
    for (size_t i = 0; i < 2; ++i) {
        PyMem_GetAllocator(domains[i], &originals[i]);
        PyMemAllocatorEx hook = {&originals[i], limited_malloc, limited_calloc, limited_realloc, plain_free};
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
    return __sanitizer_get_current_allocated_bytes();
}

}  // namespace fuzz
