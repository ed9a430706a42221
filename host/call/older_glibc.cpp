// What a static C++ runtime asks of the newest glibc, made from calls that glibc 2.14 has: a capture is recorded on
// hosts that are older than the machine that builds the recorder.
//
// The definitions are hidden. Each passes its call to the function's first version, or does its work.
#include <dlfcn.h>
#include <link.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <ctime>

#if defined(__x86_64__)
#define FIRST_VERSION "GLIBC_2.2.5"
constexpr int stat_version = 1;
#elif defined(__aarch64__)
#define FIRST_VERSION "GLIBC_2.17"
constexpr int stat_version = 0;
#endif

#ifdef FIRST_VERSION

#define FIRST_VERSION_OF(name) __asm__(".symver first_" #name ", " #name "@" FIRST_VERSION)
#define HIDDEN [[gnu::visibility("hidden")]]

extern "C" {

int first_pthread_once(pthread_once_t* control, void (*function)());
int first___pthread_key_create(pthread_key_t* key, void (*destroy)(void*));
int first_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*), void* context);
int first_pthread_detach(pthread_t thread);
int first___fxstat64(int version, int file, struct stat64* status);
int first___xstat(int version, const char* path, struct stat* status);
void* first_dlopen(const char* path, int mode);
void* first_dlsym(void* library, const char* name);
char* first_dlerror();
int first_clock_gettime(clockid_t clock, struct timespec* time);
FIRST_VERSION_OF(clock_gettime);
FIRST_VERSION_OF(dlopen);
FIRST_VERSION_OF(dlsym);
FIRST_VERSION_OF(dlerror);
FIRST_VERSION_OF(pthread_once);
FIRST_VERSION_OF(__pthread_key_create);
FIRST_VERSION_OF(pthread_create);
FIRST_VERSION_OF(pthread_detach);
FIRST_VERSION_OF(__fxstat64);
FIRST_VERSION_OF(__xstat);

// Whether the process has one thread: never assumed.
HIDDEN char __libc_single_threaded = 0;

HIDDEN void* dlopen(const char* path, int mode) noexcept
{
    return first_dlopen(path, mode);
}

HIDDEN void* dlsym(void* __restrict library, const char* __restrict name) noexcept
{
    return first_dlsym(library, name);
}

HIDDEN char* dlerror() noexcept
{
    return first_dlerror();
}

HIDDEN int clock_gettime(clockid_t clock, struct timespec* time) noexcept
{
    return first_clock_gettime(clock, time);
}

HIDDEN int pthread_once(pthread_once_t* control, void (*function)())
{
    return first_pthread_once(control, function);
}

HIDDEN int __pthread_key_create(pthread_key_t* key, void (*destroy)(void*))
{
    return first___pthread_key_create(key, destroy);
}

HIDDEN int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                          void* context) noexcept
{
    return first_pthread_create(thread, attributes, function, context);
}

HIDDEN int pthread_detach(pthread_t thread) noexcept
{
    return first_pthread_detach(thread);
}

HIDDEN int fstat64(int file, struct stat64* status) noexcept
{
    return first___fxstat64(stat_version, file, status);
}

HIDDEN int fstat(int file, struct stat* status) noexcept
{
    return first___fxstat64(stat_version, file, reinterpret_cast<struct stat64*>(status));
}

HIDDEN int stat(const char* path, struct stat* status) noexcept
{
    return first___xstat(stat_version, path, status);
}

HIDDEN int getentropy(void* bytes, size_t size)
{
    return syscall(SYS_getrandom, bytes, size, 0) == static_cast<long>(size) ? 0 : -1;
}

HIDDEN uint32_t arc4random() noexcept
{
    uint32_t number;
    return getentropy(&number, sizeof number) == 0 ? number : 0;  // the first kernels have no such call
}

#ifdef DLFO_STRUCT_HAS_EH_DBASE

// The object that holds an address, and its table of unwinding.
HIDDEN int _dl_find_object(void* address, struct dl_find_object* found) noexcept
{
    struct Search {
        uintptr_t address;
        struct dl_find_object* found;
    } search{reinterpret_cast<uintptr_t>(address), found};

    const auto look_at = [](struct dl_phdr_info* object, size_t, void* context) {
        const auto& wanted = *static_cast<Search*>(context);
        bool holds_address = false;
        for (int i = 0; i < object->dlpi_phnum; ++i) {
            const auto& part = object->dlpi_phdr[i];
            const uintptr_t start = object->dlpi_addr + part.p_vaddr;
            if (part.p_type == PT_LOAD && wanted.address >= start && wanted.address < start + part.p_memsz) {
                holds_address = true;
                wanted.found->dlfo_map_start = reinterpret_cast<void*>(start);
                wanted.found->dlfo_map_end = reinterpret_cast<void*>(start + part.p_memsz);
            }
            if (part.p_type == PT_GNU_EH_FRAME)
                wanted.found->dlfo_eh_frame = reinterpret_cast<void*>(start);
        }
        return holds_address ? 1 : 0;
    };
    *found = {};
    return dl_iterate_phdr(look_at, &search) == 1 && found->dlfo_eh_frame ? 0 : -1;
}

#endif

}  // extern "C"

#endif
