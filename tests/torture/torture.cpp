// The module once more, linked so that its allocations can be made to fail: those that it asks of the interpreter, and
// its own malloc and calloc; and, as if they were allocations, its stores of items in lists and tuples. Methods are
// called without the interpreter's check in between, so that the pair of returned value and exception is seen as it is.
// The formats that parse their arguments can be changed.
#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "core/python.h"
#include "datapath/ports/ports.h"
#include "datapath/uplink/uplink.h"
#include "platform/uplink.h"

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void __real_free(void* memory);
void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);
void __wrap_free(void* memory);
int __real_PyList_SetItem(PyObject* list, Py_ssize_t position, PyObject* item);
int __real_PyArg_ParseTuple(PyObject* args, const char* format, ...);
int __real_PyTuple_SetItem(PyObject* tuple, Py_ssize_t position, PyObject* item);
int __wrap_PyList_SetItem(PyObject* list, Py_ssize_t position, PyObject* item);
int __wrap_PyTuple_SetItem(PyObject* tuple, Py_ssize_t position, PyObject* item);
int __wrap_PyArg_ParseTuple(PyObject* args, const char* format, ...);
}

namespace {

// --- Which allocation fails ---

unsigned long reached;  // allocations since arm()
unsigned long failing;  // the one that fails; 0 is none
bool and_all_later;

bool fails_now()
{
    ++reached;
    return failing != 0 && (and_all_later ? reached >= failing : reached == failing);
}

// --- The module's own blocks ---

struct Block {
    void* memory;
    size_t size;
};

constexpr size_t max_blocks = 64;
Block blocks[max_blocks];

// What new memory holds, and what follows a block, where the sanitizers do not look behind it themselves.
constexpr unsigned char dirt = 0xa5;
#ifdef __SANITIZE_ADDRESS__
constexpr size_t behind = 0;
#else
constexpr size_t behind = 8;
#endif

void* noted(void* memory, size_t size)
{
    if (!memory)
        return nullptr;
    std::memset(static_cast<unsigned char*>(memory) + size, dirt, behind);
    for (Block& block : blocks)
        if (!block.memory) {
            block = {memory, size};
            break;
        }
    return memory;
}

// Whether nothing was written behind a block.
bool is_whole(const Block& block)
{
    const auto* end = static_cast<const unsigned char*>(block.memory) + block.size;
    return std::all_of(end, end + behind, [](unsigned char byte) { return byte == dirt; });
}

// --- The interpreter's ---

constexpr PyMemAllocatorDomain domains[] = {PYMEM_DOMAIN_MEM, PYMEM_DOMAIN_OBJ};
PyMemAllocatorEx originals[2];

void* failing_malloc(void* context, size_t size)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    return fails_now() ? nullptr : original->malloc(original->ctx, size);
}

void* failing_calloc(void* context, size_t count, size_t size)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    return fails_now() ? nullptr : original->calloc(original->ctx, count, size);
}

void* failing_realloc(void* context, void* memory, size_t size)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    return fails_now() ? nullptr : original->realloc(original->ctx, memory, size);
}

void plain_free(void* context, void* memory)
{
    const auto* original = static_cast<PyMemAllocatorEx*>(context);
    original->free(original->ctx, memory);
}

void arm(unsigned long nth, bool forever)
{
    for (size_t i = 0; i < 2; ++i) {
        PyMem_GetAllocator(domains[i], &originals[i]);
        PyMemAllocatorEx hook = {&originals[i], failing_malloc, failing_calloc, failing_realloc, plain_free};
        PyMem_SetAllocator(domains[i], &hook);
    }
    reached = 0;
    failing = nth;
    and_all_later = forever;
}

void disarm()
{
    failing = 0;
    for (size_t i = 0; i < 2; ++i)
        PyMem_SetAllocator(domains[i], &originals[i]);
}

// The interpreter keeps some dicts, lists and tuples of each size for reuse. Taking them makes each new one an
// allocation; the test sees to it that no more of them are kept.
PyObject* take_what_is_kept()
{
    constexpr int kept = 100;
    constexpr int tuple_sizes = 20;
    PyObject* taken = PyList_New(0);
    const auto take = [taken](PyObject* object) {
        if (!object)
            return;
        PyList_Append(taken, object);
        Py_DECREF(object);
    };
    for (int i = 0; taken && i < kept; ++i) {
        take(PyDict_New());
        take(PyList_New(0));
        for (int size = 1; size <= tuple_sizes; ++size)
            take(PyTuple_New(size));
    }
    return taken;
}

// A store that fails drops the item, as every failing one does, and leaves the exception of an allocation that fails.
int store_fails(PyObject* item)
{
    Py_XDECREF(item);
    PyErr_NoMemory();
    return -1;
}

// --- For the tests ---

// invoke(method, arguments, nth, forever): calls the method while its nth allocation fails, and all later ones too if
// `forever`; nth 0 lets all succeed. Gives (was NULL, result, exception type, exception text, allocations reached).
PyObject* invoke(PyObject*, PyObject* args)
{
    PyObject* method;
    PyObject* arguments;
    unsigned long nth;
    int forever;
    if (!__real_PyArg_ParseTuple(args, "OO!kp", &method, &PyTuple_Type, &arguments, &nth, &forever))
        return nullptr;
    const PyCFunction function = PyCFunction_GetFunction(method);
    if (!function)
        return nullptr;

    PyObject* taken = take_what_is_kept();
    arm(nth, forever != 0);
    PyObject* result = function(PyCFunction_GetSelf(method), arguments);
    disarm();
    Py_XDECREF(taken);

    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyObject* text = value ? PyObject_Str(value) : nullptr;
    PyErr_Clear();
    PyObject* seen = Py_BuildValue("OOOOk", result ? Py_False : Py_True, result ? result : Py_None,
                                   type ? type : Py_None, text ? text : Py_None, reached);
    Py_XDECREF(result);
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(traceback);
    Py_XDECREF(text);
    return seen;
}

// The module's own blocks that it has not given back.
PyObject* blocks_out(PyObject*, PyObject*)
{
    long count = 0;
    for (const Block& block : blocks)
        count += block.memory != nullptr;
    return PyLong_FromLong(count);
}

// The module's plain functions that build objects, as methods without arguments: so that they can be invoked too.
// Their records hold numbers beyond those that the interpreter keeps as objects, where there is room for such.

PyObject* create_port_list(PyObject*, PyObject*)
{
    constexpr uint64_t bitmap[] = {1ULL << 3 | 1ULL << 63, 1ULL << 6};
    return PyQDP_CreatePortList(3, bitmap);
}

PyObject* create_vlan_list(PyObject*, PyObject*)
{
    constexpr uint16_t vlans[] = {0, 1000, 4094};
    return PyQDP_CreateVlanList(3, vlans);
}

// The function frees the record that it is given.
PyObject* netq_info(PyObject*, PyObject*)
{
    auto* info = static_cast<NetQInfo*>(noted(__real_malloc(sizeof(NetQInfo) + behind), sizeof(NetQInfo)));
    if (!info)
        return nullptr;
    std::memset(static_cast<void*>(info), 0, sizeof *info);
    constexpr uint32_t filter[] = {0, 1U << 16, 0x01000007, 1000, 2000, 0};  // of no key and one queue
    info->qdp_port = 0x01000007;
    info->num_filters = 2;
    std::memcpy(info->entries, filter, sizeof filter);
    std::memcpy(info->entries + sizeof filter, filter, sizeof filter);
    return PyQDP_PortNetQInfo(info, sizeof *info);
}

// Which letter of the formats that parse arguments is another one; of a format that is shorter, none.
int changed_place = -1;
int changed_letter;

// change_format(place, letter): from now on, all formats have this letter in this place; change_format(-1, letter) ends
// it.
PyObject* change_format(PyObject*, PyObject* args)
{
    return __real_PyArg_ParseTuple(args, "iC", &changed_place, &changed_letter) ? Py_NewRef(Py_None) : nullptr;
}

PyMethodDef functions[] = {
    {"PyQDP_CreatePortList", create_port_list, METH_VARARGS, nullptr},
    {"PyQDP_CreateVlanList", create_vlan_list, METH_VARARGS, nullptr},
    {"PyQDP_PortNetQInfo", netq_info, METH_VARARGS, nullptr},
    {"invoke", invoke, METH_VARARGS, nullptr},
    {"change_format", change_format, METH_VARARGS, nullptr},
    {"blocks_out", blocks_out, METH_NOARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "torture", nullptr, -1, functions, nullptr, nullptr, nullptr, nullptr,
};

}  // namespace

void* __wrap_malloc(size_t size)
{
    if (fails_now())
        return nullptr;
    void* memory = noted(__real_malloc(size + behind), size);
    return memory ? std::memset(memory, dirt, size) : nullptr;
}

void* __wrap_calloc(size_t count, size_t size)
{
    return fails_now() ? nullptr : noted(__real_calloc(1, count * size + behind), count * size);
}

// A block that was written behind stays noted, as one that was lost.
void __wrap_free(void* memory)
{
    for (Block& block : blocks)
        if (memory && block.memory == memory && is_whole(block))
            block = {};
    __real_free(memory);
}

int __wrap_PyList_SetItem(PyObject* list, Py_ssize_t position, PyObject* item)
{
    return fails_now() ? store_fails(item) : __real_PyList_SetItem(list, position, item);
}

int __wrap_PyTuple_SetItem(PyObject* tuple, Py_ssize_t position, PyObject* item)
{
    return fails_now() ? store_fails(item) : __real_PyTuple_SetItem(tuple, position, item);
}

int __wrap_PyArg_ParseTuple(PyObject* args, const char* format, ...)
{
    char changed[32] = {};
    std::strncpy(changed, format, sizeof changed - 1);
    if (changed_place >= 0 && static_cast<size_t>(changed_place) < std::strlen(changed))
        changed[changed_place] = static_cast<char>(changed_letter);
    va_list places;
    va_start(places, format);
    const int parsed = PyArg_VaParse(args, changed, places);
    va_end(places);
    return parsed;
}

PyMODINIT_FUNC PyInit_torture()
{
    return PyModule_Create(&definition);
}
