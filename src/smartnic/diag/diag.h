// The methods that diagnose and tune the SmartNIC's pipeline.
#pragma once

#include "module/python.h"

namespace qdp {

// aging.cpp
Method PyQDP_Get_Aging_Interval;
Method PyQDP_Set_Aging_Interval;

// rss_override.cpp
Method PyQDP_P4RssOverrideSet;
Method PyQDP_P4RssOverrideGet;

// log_level.cpp
Method PyQDP_P4LogLevelSet;
Method PyQDP_P4LogLevelGet;

}  // namespace qdp
