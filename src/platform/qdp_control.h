// All operations of the datapath control library, libqdp.so, for those who implement, record or measure every one. Each
// returns 0 for success. A size pointer behind a record points to the record's capacity in bytes before the call. Each
// stands with its record in the header of its subsystem, which is what a caller includes.
#pragma once

#include "platform/flowcache.h"
#include "platform/fpo.h"
#include "platform/l3span.h"
#include "platform/lb.h"
#include "platform/mac.h"
#include "platform/mirrors.h"
#include "platform/mux.h"
#include "platform/p4_command.h"
#include "platform/p4_counters.h"
#include "platform/p4_ports.h"
#include "platform/pipeline.h"
#include "platform/placement.h"
#include "platform/port_conf.h"
#include "platform/ports.h"
#include "platform/rss_engine.h"
#include "platform/settings.h"
#include "platform/stats.h"
#include "platform/table_memory.h"
#include "platform/timing.h"
#include "platform/uplink.h"
