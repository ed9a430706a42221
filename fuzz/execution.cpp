// One execution: the input chooses a method or a plain function, how much memory there is, arguments, and answers.
#include <Python.h>

#include <algorithm>
#include <string_view>

#include "fuzz/arguments.h"
#include "fuzz/contract.h"
#include "fuzz/exported.h"
#include "fuzz/fault.h"
#include "fuzz/memory.h"
#include "fuzz/methods.h"
#include "fuzz/platform.h"

// The sanitizers end the process at the first error. A request for gigabytes, by a length that the platform told, fails
// as on a machine that has them not. Leaks are looked for below: objects of the interpreter are not seen otherwise.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=32:detect_leaks=0:detect_odr_violation=0:"
           "malloc_context_size=4:quarantine_size_mb=8:thread_local_quarantine_size_kb=256";
}

extern "C" const char* __ubsan_default_options()
{
    return "print_stacktrace=1";
}

namespace fuzz {

namespace {

// Enough for every result without long lists; lists run out of it soon.
constexpr size_t enough_memory = 20'000;
constexpr size_t plenty_of_memory = 300'000;
constexpr size_t much_memory = 4'000'000;

// The only method that may return NULL alone, when the library refuses.
constexpr char returns_null_alone[] = "GetUplinkStats";

void collect()
{
    PyGC_Enable();
    PyGC_Collect();
    PyGC_Disable();
}

// A collection then looks at what executions have left alone.
void freeze_what_is_there()
{
    collect();
    PyObject* collector = PyImport_ImportModule("gc");
    PyObject* done = collector ? PyObject_CallMethod(collector, "freeze", nullptr) : nullptr;
    if (!done)
        fault("the interpreter's objects cannot be frozen");
    Py_DECREF(done);
    Py_DECREF(collector);
}

void initialise_interpreter(bool has_pool)
{
    PyPreConfig before;
    PyPreConfig_InitIsolatedConfig(&before);
    // Without the interpreter's pool of small objects the sanitizers see every object; with it executions are fast.
    before.allocator = has_pool ? PYMEM_ALLOCATOR_PYMALLOC : PYMEM_ALLOCATOR_MALLOC;
    PyConfig config;
    if (PyStatus_Exception(Py_PreInitialize(&before)))
        fault("the interpreter does not start");
    hook_allocators();
    PyConfig_InitIsolatedConfig(&config);
    config.site_import = 0;
    config.use_hash_seed = 1;  // and so the same execution for the same input
    if (PyStatus_Exception(Py_InitializeFromConfig(&config)))
        fault("the interpreter does not start");
    PyConfig_Clear(&config);
    PyGC_Disable();  // collections are ours, see below
    prepare_arguments();
    freeze_what_is_there();
}

size_t take_memory(Input& input)
{
    constexpr uint8_t little = 0xff, much = 0xfe, plenty = 0xf8;
    const uint8_t drawn = input.byte();
    if (drawn == little)
        return input.take<uint16_t>();
    if (drawn == much)
        return much_memory;
    return drawn >= plenty ? plenty_of_memory : enough_memory;
}

void call_method(Input& input, const MethodUnderTest& method)
{
    const size_t memory = take_memory(input);
    PyObject* arguments = take_arguments(input, method.format);
    PyObject* result;
    {
        const MemoryLimit limit{memory};
        result = PyCFunction_GetFunction(method.object)(PyCFunction_GetSelf(method.object), arguments);
    }
    check_outcome(method.name.c_str(), result, method.name == returns_null_alone);
    Py_DECREF(arguments);
}

void execute(ByteSpan bytes)
{
    static const std::vector<MethodUnderTest> methods = methods_of_module();
    Input input{bytes};
    begin_platform(input);
    const size_t chosen = input.byte() % (methods.size() + exported_functions().size());
    if (chosen < methods.size()) {
        call_method(input, methods[chosen]);
    } else {
        const MemoryLimit limit{enough_memory};
        exported_functions()[chosen - methods.size()].call(input);
    }
    end_platform();
}

// The memory that an execution leaves in use beyond what there was; also what the interpreter keeps for reuse, unless
// that is cleared away by a collection.
size_t growth(ByteSpan bytes, bool collects)
{
    if (collects)
        collect();
    const size_t before = memory_in_use();
    execute(bytes);
    if (collects)
        collect();
    const size_t after = memory_in_use();
    return after > before ? after - before : 0;
}

// What is lost is lost in every execution.
void execute_and_look_for_leaks(ByteSpan bytes)
{
    constexpr int times = 4;
    size_t lost = growth(bytes, false);
    for (int i = 0; lost != 0 && i < times; ++i)
        lost = growth(bytes, i != 0);
    if (lost != 0)
        fault("%zu bytes of memory are lost in every execution", lost);
}

}  // namespace

}  // namespace fuzz

// The fuzzer leaves arguments with two dashes to the program.
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments)
{
    std::setvbuf(stderr, nullptr, _IOFBF, BUFSIZ);  // the module's texts, a write for each of which takes time
    const auto is_pool = [](std::string_view argument) { return argument == "--pool"; };
    fuzz::initialise_interpreter(std::any_of(*arguments, *arguments + *count, is_pool));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::execute_and_look_for_leaks({data, size});
    return 0;
}
