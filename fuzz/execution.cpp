// One execution: the input chooses a method or a plain function, how much memory there is, arguments, and answers.
#include <Python.h>

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
           "malloc_context_size=8";
}

extern "C" const char* __ubsan_default_options()
{
    return "print_stacktrace=1";
}

namespace fuzz {

namespace {

constexpr size_t enough_memory = 300'000;
constexpr size_t much_memory = 4'000'000;

// The only method that may return NULL alone, when the library refuses.
constexpr char returns_null_alone[] = "GetUplinkStats";

void initialise_interpreter()
{
    PyPreConfig before;
    PyPreConfig_InitIsolatedConfig(&before);
    before.allocator = PYMEM_ALLOCATOR_MALLOC;  // so that the sanitizers see every object
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
}

size_t take_memory(Input& input)
{
    constexpr uint8_t little = 0xff;
    constexpr uint8_t much = 0xfe;
    switch (input.byte()) {
    case little:
        return input.take<uint16_t>();
    case much:
        return much_memory;
    default:
        return enough_memory;
    }
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

void collect()
{
    PyGC_Enable();
    PyGC_Collect();
    PyGC_Disable();
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

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::initialise_interpreter();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::execute_and_look_for_leaks({data, size});
    return 0;
}
