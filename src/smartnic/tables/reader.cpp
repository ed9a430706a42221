// The end that all readers of hardware tables share.
#include "smartnic/tables/reader.h"

namespace qdp {

PyObject* shown(Fields fields, Bytes entry)
{
    PyRef dict{PyDict_New()};
    if (!dict)
        return print_none(no_buffer);
    const bool complete = fill(dict.get(), fields, entry);
    return built_or_none(std::move(dict), complete);
}

}  // namespace qdp
