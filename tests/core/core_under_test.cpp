// The module's core as a Python extension of its own, so that its tests can hand it bytes of their own making.
#include "core/build.h"
#include "core/render.h"
#include "datapath/features/fpo_defaults.h"
#include "switchid/property.h"

#include <sys/mman.h>

namespace {

using namespace qdp;

struct [[gnu::packed]] Sample {
    uint8_t u8;
    uint16_t u16;
    uint32_t u32;
    uint64_t u64;
    int8_t i8;
    int32_t i32;
    int64_t i64;
    char name[8];
    uint8_t mac_address[6];
    uint8_t count;
    uint16_t numbers[4];
};
static_assert(sizeof(Sample) == 51);

PyObject* twice(Bytes record, const Field& field)
{
    return object_or_error(PyLong_FromUnsignedLong(2 * record.unsigned_at(field.where)));
}

using R = Sample;
constexpr auto member_fields = fields<sizeof(R)>({
    {"i64", AT(R, i64)},
    {"u8", AT(R, u8)},
    {"u16", AT(R, u16)},
    {"u32", AT(R, u32)},
    {"u64", AT(R, u64)},
    {"u64 signed", AT(R, u64), as_signed},
    {"u64 low", low_32(AT(R, u64))},
    {"i8", AT(R, i8)},
    {"i32", AT(R, i32)},
    {"u8 twice", AT(R, u8), twice},
    {"name", AT(R, name), as_text},
    {"mac", AT(R, mac_address), as_mac},
    {"numbers", AT(R, numbers), as_list<uint16_t, AT(R, count)>},
    {"second number", AT(R, numbers[1])},
});

constexpr size_t entry_bytes = 40;
constexpr Names<3> layer_names{{"L2", "L3", "L4"}, "Unknown"};
constexpr auto entry_fields = fields<entry_bytes>({
    {"bit 0", bits(0, 0, 1)},
    {"bit 7", bits(0, 7, 1)},
    {"across bytes", bits(0, 5, 17)},
    {"top of word", bits(0, 26, 6)},
    {"five bytes", bits(4, 3, 33)},
    {"all 64", bytes(8, 8)},
    {"big 16", bytes(8, 2), as_big_endian},
    {"big 32", bytes(8, 4), as_big_endian},
    {"big 64", bytes(8, 8), as_big_endian},
    {"signed big 16", bytes(8, 2), as_signed_big_endian},
    {"signed big 64", bytes(8, 8), as_signed_big_endian},
    {"layer", bits(16, 0, 3), as_name<layer_names>},
    {"is ipv6", bits(16, 3, 1)},
    {"address", bytes(17, 16), as_address<bits(16, 3, 1)>},
    {"mac", bytes(33, 6), as_mac},
    {"last", bytes(39, 1)},
});

// The bytes of an argument, in a block of exactly their size, so that the sanitizers see a read beyond them.
struct Block {
    Owned<void> memory;
    size_t size;

    explicit Block(PyObject* bytes) : memory{std::malloc(size_of(bytes))}, size{size_of(bytes)}
    {
        std::memcpy(memory.get(), PyBytes_AsString(bytes), size);
    }

    Bytes bytes() const { return {memory.get(), size}; }

private:
    static size_t size_of(PyObject* bytes) { return static_cast<size_t>(PyBytes_Size(bytes)); }
};

PyObject* decode(Fields table, PyObject* args)
{
    PyObject* bytes;
    if (!PyArg_ParseTuple(args, "S", &bytes))
        return nullptr;
    return dict_of(table, Block{bytes}.bytes());
}

PyObject* members(PyObject*, PyObject* args)
{
    return decode(member_fields, args);
}

// The same as the results of methods.
PyObject* members_or_none(PyObject*, PyObject* args)
{
    PyObject* bytes;
    return PyArg_ParseTuple(args, "S", &bytes) ? dict_or_none(member_fields, Block{bytes}.bytes()) : nullptr;
}

PyObject* members_or_null(PyObject*, PyObject* args)
{
    PyObject* bytes;
    return PyArg_ParseTuple(args, "S", &bytes) ? dict_or_null(member_fields, Block{bytes}.bytes()) : nullptr;
}

PyObject* entry(PyObject*, PyObject* args)
{
    return decode(entry_fields, args);
}

PyObject* entries(PyObject*, PyObject* args)
{
    PyObject* bytes;
    Py_ssize_t count;
    if (!PyArg_ParseTuple(args, "Sn", &bytes, &count))
        return nullptr;
    const Block block{bytes};
    PyRef list{PyList_New(count)};
    const bool complete = fill_dicts(list.get(), static_cast<size_t>(count), entry_fields, block.bytes());
    return complete ? list.release() : nullptr;
}

// A block of pages of 0xff, of which `size` bytes from `offset` on were cleared. The kernel takes no page of a locked
// block back.
PyObject* cleared(PyObject*, PyObject* args)
{
    constexpr size_t page = 4096, block_bytes = 8 * page;
    uint32_t offset, size;
    int is_locked;
    if (!PyArg_ParseTuple(args, "IIp", &offset, &size, &is_locked) || size > block_bytes || offset > block_bytes - size)
        return nullptr;
    const Owned<void> block{std::aligned_alloc(page, block_bytes)};
    std::memset(block.get(), 0xff, block_bytes);
    if (is_locked && mlock(block.get(), block_bytes) != 0)
        return PyErr_SetFromErrno(PyExc_OSError);
    clear_large(static_cast<char*>(block.get()) + offset, size);
    if (is_locked)
        munlock(block.get(), block_bytes);
    return PyBytes_FromStringAndSize(static_cast<const char*>(block.get()), block_bytes);
}

constexpr size_t text_room = 64;
constexpr size_t margin = 8;

// A column into a buffer of `size` bytes among others, all of '#' before: its result, and all of the bytes.
PyObject* column(PyObject*, PyObject* args)
{
    PyObject* address;
    uint32_t size;
    if (!PyArg_ParseTuple(args, "SI", &address, &size) || size > text_room)
        return nullptr;
    const Block block{address};
    char memory[margin + text_room + margin];
    std::memset(memory, '#', sizeof memory);
    char* text = memory + margin;
    const int length = block.size == sizeof(uint32_t) ? ipv4_column(block.bytes().load<uint32_t>(0), text, size)
                                                      : ipv6_column(block.memory.get(), text, size);
    return Py_BuildValue("iN", length,
                         PyBytes_FromStringAndSize(memory, static_cast<Py_ssize_t>(margin + size + margin)));
}

PyObject* parsed_address(PyObject*, PyObject* args)
{
    uint32_t version;
    const char* address;
    if (!PyArg_ParseTuple(args, "Is", &version, &address))
        return nullptr;
    char out[16] = {};
    const int result = parse_address(version, address, out);
    return Py_BuildValue("iN", result, PyBytes_FromStringAndSize(out, sizeof out));
}

PyObject* counted_bits(PyObject*, PyObject* args)
{
    unsigned long long word;
    if (!PyArg_ParseTuple(args, "K", &word))
        return nullptr;
    return PyLong_FromLong(bit_count(word));
}

constexpr size_t setting_room = 64;

// Reads a setting of `length` bytes: its bytes, or the name of what it found instead.
PyObject* setting(PyObject*, PyObject* args)
{
    const char* alias;
    const char* key;
    Py_ssize_t length;
    const char* version_key = nullptr;
    if (!PyArg_ParseTuple(args, "ssn|s", &alias, &key, &length, &version_key))
        return nullptr;
    SwitchId id;
    if (!resolve_switch_id(alias, id))
        return none();
    char record[setting_room];
    switch (read_setting(id, key, record, static_cast<size_t>(length), version_key ? version_key : key)) {
    case SettingStatus::present:
        return PyBytes_FromStringAndSize(record, length);
    case SettingStatus::absent:
        return PyUnicode_FromString("absent");
    case SettingStatus::malformed:
        return PyUnicode_FromString("malformed");
    }
    return nullptr;
}

PyObject* set_setting(PyObject*, PyObject* args)
{
    const char* alias;
    const char* key;
    PyObject* record;
    if (!PyArg_ParseTuple(args, "ssS", &alias, &key, &record))
        return nullptr;
    SwitchId id;
    const Block block{record};
    return PyBool_FromLong(resolve_switch_id(alias, id) && write_setting(id, key, block.memory.get(), block.size));
}

// The portset name as the module's methods pass it on: always with a NUL.
PyObject* portset_name(PyObject*, PyObject* args)
{
    const char* alias;
    if (!PyArg_ParseTuple(args, "s", &alias))
        return nullptr;
    PortsetName name;
    std::memset(name.text, '#', sizeof name.text);
    return resolve_portset_name(alias, name) ? PyUnicode_FromString(name.text) : none();
}

PyObject* compared_releases(PyObject*, PyObject* args)
{
    const char *first, *second;
    if (!PyArg_ParseTuple(args, "ss", &first, &second))
        return nullptr;
    return PyLong_FromLong(compare_releases(first, second));
}

PyObject* fpo_models(PyObject*, PyObject* args)
{
    const char* release;
    if (!PyArg_ParseTuple(args, "z", &release))
        return nullptr;
    return PyLong_FromUnsignedLong(default_fpo_models(release));
}

// What a method's function returns, and the type of the exception beside it: the interpreter itself drops the result
// when there is an exception.
PyObject* returned(PyObject*, PyObject* args)
{
    PyObject *method, *arguments;
    if (!PyArg_ParseTuple(args, "OO", &method, &arguments))
        return nullptr;
    const PyRef result{PyCFunction_GetFunction(method)(PyCFunction_GetSelf(method), arguments)};
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    const PyRef owned_value{value}, owned_traceback{traceback};
    return Py_BuildValue("ON", result.get(), type ? type : none());
}

PyMethodDef functions[] = {
    {"members", members, METH_VARARGS, nullptr},
    {"members_or_none", members_or_none, METH_VARARGS, nullptr},
    {"members_or_null", members_or_null, METH_VARARGS, nullptr},
    {"entry", entry, METH_VARARGS, nullptr},
    {"entries", entries, METH_VARARGS, nullptr},
    {"cleared", cleared, METH_VARARGS, nullptr},
    {"column", column, METH_VARARGS, nullptr},
    {"parsed_address", parsed_address, METH_VARARGS, nullptr},
    {"counted_bits", counted_bits, METH_VARARGS, nullptr},
    {"setting", setting, METH_VARARGS, nullptr},
    {"set_setting", set_setting, METH_VARARGS, nullptr},
    {"portset_name", portset_name, METH_VARARGS, nullptr},
    {"compared_releases", compared_releases, METH_VARARGS, nullptr},
    {"fpo_models", fpo_models, METH_VARARGS, nullptr},
    {"returned", returned, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "core_under_test", nullptr, -1, functions, nullptr, nullptr, nullptr, nullptr,
};

}  // namespace

PyMODINIT_FUNC PyInit_core_under_test()
{
    return PyModule_Create(&definition);
}
