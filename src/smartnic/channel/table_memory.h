// The SmartNIC's table memory: raw entries of a hardware table.
#pragma once

#include "core/build.h"
#include "platform/table_memory.h"

namespace qdp {

// Dumps a range of a table; `dump` should be zeroed before. True for success.
bool dump_table(const TableRange& range, TableDump& dump);

// The bytes that the dump says follow its header; 0 when it says less than its header.
uint32_t data_bytes(const TableDump& dump);

// One entry as a dict. A refusing library prints `failure`; an answer that is not exactly one entry long prints its
// size; both are None.
PyObject* table_entry(uint32_t table, uint32_t index, Fields fields, const char* failure);

}  // namespace qdp
