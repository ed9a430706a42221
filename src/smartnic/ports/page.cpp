// A page of a list as a dict.
#include "smartnic/ports/page.h"

namespace qdp {

PyObject* page_object(PageKeys keys, uint32_t count, uint32_t next, Fields fields, Bytes entries)
{
    PyRef page{PyDict_New()};
    if (!page)
        return print_none(no_buffer);

    const PyRef list{object_or_error(PyList_New(count))};
    const bool complete = list && set_dict_item(page.get(), keys.list, new_reference(list.get()).release()) &&
                          set_dict_item(page.get(), keys.next, object_or_error(PyLong_FromUnsignedLong(next))) &&
                          fill_dicts(list.get(), count, fields, entries);
    return built_or_none(std::move(page), complete);
}

}  // namespace qdp
