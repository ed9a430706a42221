// A page of a list as a dict: the list of its entries, and where the next page starts.
#pragma once

#include "core/build.h"
#include "platform/mux.h"
#include "platform/p4_ports.h"

namespace qdp {

// The three lists of the command channel fail with the text of one of them, deliberately.
inline constexpr char no_port_list[] = "Failed to get lif port list\n";

struct PageKeys {
    const char* list;
    const char* next;
};

// The library's count is trusted; entries that its answer has no room for read as zero bytes.
PyObject* page_object(PageKeys keys, uint32_t count, uint32_t next, Fields fields, Bytes entries);

template <class Entry>
PyObject* page_object(const char* list_key, const P4ListResponse<Entry>& page, Fields fields)
{
    return page_object({list_key, "nextIndex"}, page.count, page.next_index, fields, entries_of(page));
}

template <class Entry>
PyObject* page_object(const MuxListResponse<Entry>& page, Fields fields)
{
    return page_object({"portlist", "nextFcPort"}, page.count, page.next_fc_port, fields, entries_of(page));
}

}  // namespace qdp
