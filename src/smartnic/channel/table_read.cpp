// The framing of table reads: the command header, the table, its key.
#include "smartnic/channel/table_read.h"

#include <alloca.h>

#include <algorithm>
#include <limits>

#include "core/fail.h"
#include "platform/p4_command.h"

namespace {

struct TableRead {
    P4CommandHeader command;
    P4TableReadHeader table;
};
static_assert(sizeof(TableRead) == 8);

struct IndexRead {
    TableRead header;
    uint32_t index;
};
static_assert(sizeof(IndexRead) == 12);

// The headers before a key of `key_length` bytes; both lengths are cut to 16 bits.
TableRead headers(uint16_t table, uint32_t key_length)
{
    return {{static_cast<uint16_t>(sizeof(TableRead) + key_length), static_cast<uint16_t>(P4Opcode::table_read)},
            {table, static_cast<uint16_t>(key_length)}};
}

uint32_t send(const TableRead* request, void* entry, uint32_t* entry_length)
{
    const uint32_t status = Qdp_P4_Cmd(request, request->command.length, entry, entry_length);
    if (status != 0)
        qdp::print("Failed to get table data\n");
    return status;
}

}  // namespace

uint32_t QdpGetIndexTableData(uint32_t index, uint16_t table, void* entry, uint32_t* entry_length)
{
    const IndexRead request{headers(table, sizeof index), index};
    return send(&request.header, entry, entry_length);
}

// The request takes the stack that its key needs, in whole words, and never more than for a key of 64 KiB: neither of
// its lengths can name a byte beyond that, so what follows in a longer key could not be read by anyone.
uint32_t QdpGetGenericKeyTableData(const void* key, uint32_t key_length, uint16_t table, void* entry,
                                   uint32_t* entry_length)
{
    constexpr uint32_t word = sizeof(uint32_t);
    const uint32_t key_bytes = std::min<uint32_t>(key_length, std::numeric_limits<uint16_t>::max());
    const size_t words = (sizeof(TableRead) + key_bytes + word - 1) / word;

    auto* request = static_cast<TableRead*>(alloca(words * word));
    *request = headers(table, key_length);
    if (key_bytes != 0)
        std::memcpy(request + 1, key, key_bytes);
    return send(request, entry, entry_length);
}
