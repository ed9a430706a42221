// Methods on switch features and flow offload.
#pragma once

#include "module/python.h"

namespace qdp {

// rss_engine.cpp
Method PyQDP_List_RSS_Engine;

// l3span.cpp
Method PyQDP_Get_L3SPAN_Record;

}  // namespace qdp
