// Arguments of a method: integers of odd sizes, texts with NULs and surrogates, nested containers, odd classes.
#include "fuzz/arguments.h"

#include <string>

#include "fuzz/fault.h"
#include "fuzz/texts.h"

namespace fuzz {

namespace {

// Objects that are like those that methods take, and behave as their class says.
constexpr char odd_classes[] = R"(
class Int(int): pass
class Str(str): pass
class Tuple(tuple): pass
class Dict(dict):
    def __getitem__(self, key): raise KeyError(key)
class Index:
    def __index__(self): return 7
class RefusingIndex:
    def __index__(self): raise ValueError("no index")
class Key:
    def __hash__(self): return hash("models")
    def __eq__(self, other): raise ValueError("not to be compared")
odd = [Int(3), Int(1 << 70), Str("cpu"), Tuple((0, 1)), Dict(models=1, enabled=True), Index(), RefusingIndex(),
       {Key(): 1}, {"enabled": RefusingIndex()}, {"models": Index(), 1: 2}, (Index(), RefusingIndex()), object(), ...,
       True, False, 1.5, float("nan"), b"bytes\0", bytearray(b"cpu"), {1}, range(3), int, len]
)";

PyObject* odd_objects;  // a list

PyObject* integer(Input& input)
{
    constexpr unsigned mostly = 240;
    const uint64_t number = input.number();
    if (input.chance(mostly))
        return PyLong_FromUnsignedLongLong(number);
    if (number % 2 == 0)
        return PyLong_FromLongLong(static_cast<long long>(number));  // negative too
    const ByteSpan run = input.bytes(number % 256);                  // of hundreds of bytes
    return _PyLong_FromByteArray(run.data(), run.size(), 1, number % 4 == 1);
}

// Each byte a character, or as UTF-8 in which what is none becomes surrogates.
PyObject* text(Input& input)
{
    const std::string bytes = take_text(input);
    const auto size = static_cast<Py_ssize_t>(bytes.size());
    return input.chance(128) ? PyUnicode_DecodeLatin1(bytes.data(), size, nullptr)
                             : PyUnicode_DecodeUTF8(bytes.data(), size, "surrogateescape");
}

PyObject* any(Input& input, int depth);

template <class Item>
PyObject* tuple_of(size_t count, Item item)
{
    PyObject* tuple = PyTuple_New(static_cast<Py_ssize_t>(count));
    for (size_t i = 0; i < count; ++i)
        PyTuple_SET_ITEM(tuple, static_cast<Py_ssize_t>(i), item());
    return tuple;
}

PyObject* tuple_of_integers(Input& input)
{
    constexpr size_t too_many = 70;
    return tuple_of(input.byte() % too_many, [&] { return integer(input); });
}

// As traffic is given; the same tuple many times makes a long one.
PyObject* tuple_of_traffic(Input& input)
{
    PyObject* traffic = tuple_of(5, [&] { return integer(input); });
    PyObject* last = any(input, 0);
    const size_t count = input.byte();
    size_t i = 0;
    PyObject* all = tuple_of(count, [&] {
        PyObject* item = ++i == count && last != Py_None ? last : traffic;
        Py_INCREF(item);
        return item;
    });
    Py_DECREF(traffic);
    Py_DECREF(last);
    return all;
}

PyObject* dict_of_settings(Input& input)
{
    PyObject* dict = PyDict_New();
    for (const char* key : {"enabled", "models"}) {
        if (input.chance(64))
            continue;
        PyObject* value = input.chance(192) ? integer(input) : any(input, 0);
        PyDict_SetItemString(dict, key, value);
        Py_DECREF(value);
    }
    return dict;
}

PyObject* list_of_items(Input& input, int depth)
{
    PyObject* tuple = tuple_of(input.byte() % 8, [&] { return any(input, depth - 1); });
    PyObject* list = PySequence_List(tuple);
    Py_DECREF(tuple);
    return list;
}

PyObject* odd(Input& input)
{
    PyObject* object = PyList_GET_ITEM(odd_objects, input.byte() % PyList_GET_SIZE(odd_objects));
    Py_INCREF(object);
    return object;
}

PyObject* any(Input& input, int depth)
{
    switch (input.byte() % (depth > 0 ? 9 : 4)) {
    case 0:
        Py_RETURN_NONE;
    case 1:
        return integer(input);
    case 2:
        return text(input);
    case 3:
        return odd(input);
    case 4:
        return tuple_of(input.byte() % 8, [&] { return any(input, depth - 1); });
    case 5:
        return list_of_items(input, depth);
    case 6:
        return dict_of_settings(input);
    case 7:
        return tuple_of_traffic(input);
    default:
        return tuple_of_integers(input);
    }
}

PyObject* argument(Input& input, char unit)
{
    constexpr unsigned mostly = 240;
    constexpr int deepest = 3;
    if (!input.chance(mostly))
        return any(input, deepest);
    switch (unit) {
    case 's':
        return text(input);
    case 'O':
        return any(input, deepest);
    default:
        return integer(input);
    }
}

}  // namespace

void prepare_arguments()
{
    PyObject* names = PyModule_GetDict(PyImport_AddModule("__main__"));
    PyObject* done = PyRun_String(odd_classes, Py_file_input, names, names);
    odd_objects = done ? PyDict_GetItemString(names, "odd") : nullptr;
    if (!odd_objects) {
        PyErr_Print();
        fault("the odd objects cannot be made");
    }
    Py_DECREF(done);
}

PyObject* take_arguments(Input& input, std::string_view format)
{
    constexpr unsigned rarely = 4;
    size_t count = format.size();
    if (input.chance(rarely))
        count = input.byte() % 20;
    size_t i = 0;
    return tuple_of(count, [&] {
        const char unit = i < format.size() ? format[i] : 'O';
        ++i;
        return argument(input, unit);
    });
}

}  // namespace fuzz
