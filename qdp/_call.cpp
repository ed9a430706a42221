// The capture of the text that a method prints: libc's stderr points at a memory stream for the length of one call,
// under one hold of the interpreter lock.
#include <Python.h>

#include <stdio_ext.h>

#include <cstdio>
#include <memory>
#include <type_traits>

namespace {

struct DropReference {
    void operator()(PyObject* object) const { Py_DECREF(object); }
};

// A reference of our own, taken over from the call that created the object.
using PyRef = std::unique_ptr<PyObject, DropReference>;

PyRef borrowed(PyObject* object)
{
    Py_XINCREF(object);
    return PyRef{object};
}

// --- The stream, one for the process; all of it is used under the interpreter lock ---

// The stream is never closed: a thread of the platform may have read `stderr` while it pointed here, and write later.
FILE* stream;
char* bytes;  // what is in the stream, after a flush
size_t size;

FILE* real_stderr;
// Calls in progress. A method that runs a signal handler, or a collection of garbage, may meet calls inside itself.
unsigned depth;

// musl declares stderr constant: there the text stays where it goes.
template <class Stream>
constexpr bool can_point = std::is_assignable_v<Stream&, FILE*>;

template <class Stream>
void point(Stream& standard_error, FILE* where)
{
    if constexpr (can_point<Stream>)
        standard_error = where;
}

void write_through(FILE* where, const char* text, size_t length)
{
    std::fwrite(text, 1, length, where);
    std::fflush(where);
}

// How much text is in the stream. All of it counts as pending until it is taken.
size_t written()
{
    return __fpending(stream);
}

// Takes what was written behind `start` out of the stream.
template <class Taker>
auto take(size_t start, Taker taker)
{
    flockfile(stream);
    std::fflush(stream);
    // Less than `start` when a call of another thread, begun inside this one, has taken back what was there.
    const size_t first = size < start ? 0 : start;
    auto taken = taker(bytes + first, size - first);
    fseeko(stream, static_cast<off_t>(first), SEEK_SET);
    funlockfile(stream);
    return taken;
}

// Begins a capture: where its text will start.
size_t begin()
{
    if (depth++ == 0) {
        real_stderr = stderr;
        if (written() != 0)  // from a thread of the platform, after the last call
            take(0, [](const char* text, size_t length) { return write_through(real_stderr, text, length), 0; });
        point(stderr, stream);
    }
    return written();
}

// Ends a capture: whether there is text of it.
bool end(size_t start)
{
    if (--depth == 0 && stderr == stream)
        point(stderr, real_stderr);
    return written() != start;
}

// The text of a capture that has ended, or null after a failure. To be taken before anything else runs.
PyRef text_since(size_t start)
{
    return PyRef{take(start, [](const char* text, size_t length) {
        return PyBytes_FromStringAndSize(text, static_cast<Py_ssize_t>(length));
    })};
}

// --- Records: a dictionary of a result becomes the attributes of an object. The plan of a result is, as in record.py,
// None, a record class, [a plan], (plans...), or {None: record class, key: plan} ---

// The interned text "__dict__".
PyObject* dict_attribute;

PyRef as_records(PyObject* plan, PyObject* value);

// A record of the class that has adopted the dictionary, or null.
PyRef adopted(PyObject* record_class, PyObject* values)
{
    const auto type = reinterpret_cast<PyTypeObject*>(record_class);
    const auto allocate = reinterpret_cast<allocfunc>(PyType_GetSlot(type, Py_tp_alloc));
    PyRef record{allocate(type, 0)};
    if (!record || PyObject_SetAttr(record.get(), dict_attribute, values) != 0)
        return nullptr;
    return record;
}

PyRef adopted_with_inside(PyObject* plan, PyObject* values)
{
    PyObject *key, *inside, *record_class = nullptr;
    for (Py_ssize_t position = 0; PyDict_Next(plan, &position, &key, &inside);) {
        if (key == Py_None) {
            record_class = inside;
        } else if (PyObject* value = PyDict_GetItem(values, key)) {
            const PyRef records = as_records(inside, value);
            if (!records || PyDict_SetItem(values, key, records.get()) != 0)
                return nullptr;
        }
    }
    return adopted(record_class, values);
}

PyRef list_of_records(PyObject* plan, PyObject* list)
{
    for (Py_ssize_t i = 0; i < PyList_Size(list); ++i) {
        PyRef records = as_records(plan, PyList_GetItem(list, i));
        if (!records || PyList_SetItem(list, i, records.release()) != 0)
            return nullptr;
    }
    return borrowed(list);
}

// `plan_at(i)` is the plan of the item at i.
template <class PlanAt>
PyRef tuple_of_records(PyObject* tuple, PlanAt plan_at)
{
    PyRef made{PyTuple_New(PyTuple_Size(tuple))};
    for (Py_ssize_t i = 0; made && i < PyTuple_Size(tuple); ++i) {
        PyRef records = as_records(plan_at(i), PyTuple_GetItem(tuple, i));
        if (!records || PyTuple_SetItem(made.get(), i, records.release()) != 0)
            return nullptr;
    }
    return made;
}

// A result with its dictionaries adopted, in place where it can be; what is not of its plan stays as it is.
PyRef as_records(PyObject* plan, PyObject* value)
{
    if (PyDict_CheckExact(value)) {
        if (PyType_Check(plan))
            return adopted(plan, value);
        if (PyDict_CheckExact(plan))
            return adopted_with_inside(plan, value);
    } else if (PyList_CheckExact(plan)) {
        PyObject* item_plan = PyList_GetItem(plan, 0);
        if (PyList_CheckExact(value))
            return list_of_records(item_plan, value);
        if (PyTuple_CheckExact(value))
            return tuple_of_records(value, [=](Py_ssize_t) { return item_plan; });
    } else if (PyTuple_CheckExact(plan) && PyTuple_CheckExact(value) && PyTuple_Size(plan) == PyTuple_Size(value)) {
        return tuple_of_records(value, [=](Py_ssize_t i) { return PyTuple_GetItem(plan, i); });
    }
    return borrowed(value);
}

// --- Calls ---

struct State {
    PyObject* rows;       // dict: method's name, and the method: (function, failing result, plan, name)
    PyObject* other_row;  // makes the row of what is none of these
    PyObject* settle;     // ends a call that printed, raised, or returned the failing result
};

enum Place { function_of, failure_of, plan_of, name_of, places };

State* state_of(PyObject* module)
{
    return static_cast<State*>(PyModule_GetState(module));
}

PyRef row_of(const State* state, PyObject* method)
{
    PyObject* row = PyDict_GetItemWithError(state->rows, method);
    if (row || PyErr_Occurred())
        return borrowed(row);
    return PyRef{PyObject_CallFunctionObjArgs(state->other_row, method, nullptr)};
}

// The exception that is set, no longer set; or None.
PyRef fetched_exception()
{
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    if (!type)
        return borrowed(Py_None);
    PyErr_NormalizeException(&type, &value, &traceback);
    if (traceback)
        PyException_SetTraceback(value, traceback);
    Py_XDECREF(type);
    Py_XDECREF(traceback);
    return PyRef{value};
}

// The end of a call that printed, raised, or returned the failing result.
PyRef settled(const State* state, PyObject* row, PyObject* arguments, PyRef result, PyRef text)
{
    if (result && !text)
        return nullptr;
    const PyRef exception = result ? borrowed(Py_None) : fetched_exception();
    if (!text)  // an exception for want of memory
        text.reset(PyBytes_FromStringAndSize("", 0));
    if (!text)
        return nullptr;
    return PyRef{PyObject_CallFunctionObjArgs(state->settle, PyTuple_GetItem(row, name_of), arguments,
                                              result ? result.get() : Py_None, exception.get(), text.get(), nullptr)};
}

PyRef result_of(const State* state, PyObject* row, PyObject* arguments)
{
    const size_t start = begin();
    PyRef result{PyObject_Call(PyTuple_GetItem(row, function_of), arguments, nullptr)};
    const bool has_text = end(start);
    if (!has_text && result && result.get() != PyTuple_GetItem(row, failure_of))
        return result;
    return settled(state, row, arguments, std::move(result), text_since(start));
}

PyObject* call_method(PyObject* module, PyObject* method_and_arguments, bool adopts)
{
    const State* state = state_of(module);
    const Py_ssize_t count = PyTuple_Size(method_and_arguments);
    if (count == 0 || !state->settle) {
        PyErr_SetString(PyExc_TypeError, "call() takes a method and its arguments");
        return nullptr;
    }
    const PyRef row = row_of(state, PyTuple_GetItem(method_and_arguments, 0));
    if (!row)
        return nullptr;
    const PyRef arguments{PyTuple_GetSlice(method_and_arguments, 1, count)};
    if (!arguments)
        return nullptr;
    PyRef result = result_of(state, row.get(), arguments.get());
    if (result && adopts)
        result = as_records(PyTuple_GetItem(row.get(), plan_of), result.get());
    return result.release();
}

// --- The module ---

PyObject* call(PyObject* module, PyObject* args)
{
    return call_method(module, args, true);
}

PyObject* call_raw(PyObject* module, PyObject* args)
{
    return call_method(module, args, false);
}

PyObject* as_records_of(PyObject*, PyObject* args)
{
    PyObject *plan, *value;
    return PyArg_ParseTuple(args, "OO", &plan, &value) ? as_records(plan, value).release() : nullptr;
}

PyObject* pass_on(PyObject*, PyObject* args)
{
    PyObject* given;
    char* text;
    Py_ssize_t length;
    if (!PyArg_ParseTuple(args, "O", &given) || PyBytes_AsStringAndSize(given, &text, &length) != 0)
        return nullptr;
    write_through(depth > 0 ? real_stderr : stderr, text, static_cast<size_t>(length));
    return borrowed(Py_None).release();
}

PyObject* install(PyObject* module, PyObject* args)
{
    PyObject *rows, *other_row, *settle;
    if (!PyArg_ParseTuple(args, "O!OO", &PyDict_Type, &rows, &other_row, &settle))
        return nullptr;
    State* state = state_of(module);
    const PyRef replaced[] = {PyRef{state->rows}, PyRef{state->other_row}, PyRef{state->settle}};
    state->rows = borrowed(rows).release();
    state->other_row = borrowed(other_row).release();
    state->settle = borrowed(settle).release();
    return borrowed(Py_None).release();
}

int set_up(PyObject*)
{
    if (!can_point<decltype(stderr)>) {
        PyErr_SetString(PyExc_ImportError, "this libc declares stderr constant");
        return -1;
    }
    if (!stream)
        stream = open_memstream(&bytes, &size);
    if (!dict_attribute)
        dict_attribute = PyUnicode_InternFromString("__dict__");
    if (!stream)
        PyErr_NoMemory();
    return stream && dict_attribute ? 0 : -1;
}

int visit_all(PyObject* module, visitproc visit, void* arg)
{
    const State* state = state_of(module);
    if (!state)  // before CPython 3.9, a collection may meet the module before it has its state
        return 0;
    Py_VISIT(state->rows);
    Py_VISIT(state->other_row);
    Py_VISIT(state->settle);
    return 0;
}

int drop_all(PyObject* module)
{
    State* state = state_of(module);
    if (!state)
        return 0;
    const PyRef dropped[] = {PyRef{state->rows}, PyRef{state->other_row}, PyRef{state->settle}};
    *state = {};
    return 0;
}

PyMethodDef methods[] = {
    {"call", call, METH_VARARGS,
     "call(method, *arguments)\n--\n\n"
     "Calls a method of _libqdp, by its name or itself: its result as records, or an exception of QdpError."},
    {"call_raw", call_raw, METH_VARARGS,
     "call_raw(method, *arguments)\n--\n\nAs call, with the module's own objects for a result."},
    {"as_records", as_records_of, METH_VARARGS,
     "as_records(plan, value)\n--\n\nA result with its dictionaries as records, by its plan."},
    {"pass_on", pass_on, METH_VARARGS, "pass_on(text)\n--\n\nWrites bytes to the real standard error."},
    {"install", install, METH_VARARGS,
     "install(rows, other_row, settle)\n--\n\nSays what is known of the methods, and what ends a call that failed."},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef_Slot slots[] = {
    {Py_mod_exec, reinterpret_cast<void*>(set_up)},
    {0, nullptr},
};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT,
    "qdp._call",
    "Calls of _libqdp's methods, with the text that they print.",
    sizeof(State),
    methods,
    slots,
    visit_all,
    drop_all,
    nullptr,
};

}  // namespace

PyMODINIT_FUNC PyInit__call()
{
    return PyModuleDef_Init(&definition);
}
