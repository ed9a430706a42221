// Methods on the datapath's MAC tables.
#pragma once

#include "core/python.h"
#include "platform/mac.h"

namespace qdp {

// mac_table.cpp
Method PyQDP_List_Port_MACTable;
Method PyQDP_Clear_Port_MACTable;
Method PyQDP_Add_MAC_Entry;
Method PyQDP_Del_MAC_Entry;
Method PyQDP_List_Switch_MACTable;
Method PyQDP_Clear_Switch_MACTable;

// Adding and deleting are one method with the operation as its third parameter.
PyObject* PyQDP_MAC_Entry_Ops(PyObject* module, PyObject* args, MacOperation operation);

}  // namespace qdp
