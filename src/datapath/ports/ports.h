// Methods on the datapath's switches and ports.
#pragma once

#include "module/python.h"

namespace qdp {

// inventory.cpp
Method PyQDP_List_Switches;
Method PyQDP_List_Ports;

}  // namespace qdp
