// Methods that read one entry of a hardware table of the SmartNIC.
#pragma once

#include "core/python.h"

namespace qdp {

// stats_tables.cpp
Method PyQDP_TableLifStatsGet;
Method PyQDP_TablePortStatsGet;
Method PyQDP_TableP4IStatsGet;
Method PyQDP_TableP4EStatsGet;

// port_tables.cpp
Method PyQDP_TableInputGet;
Method PyQDP_TableOutputGet;
Method PyQDP_TableMuxVlanGet;
Method PyQDP_TableVlanMapGet;
Method PyQDP_TableL2SegGet;
Method PyQDP_TableRegMACGet;

// conntrack_tables.cpp
Method PyQDP_TableIPFixGet;
Method PyQDP_TableCTStatsGet;
Method PyQDP_TableCTStateGet;

// mirror_tables.cpp
Method PyQDP_TableMirrorGet;
Method PyQDP_TableMirrorL3Get;

// tunnel_tables.cpp
Method PyQDP_TableTunnelTerminateGet;
Method PyQDP_TableTunnelSAGet;
Method PyQDP_TableTunnelRewriteGet;

// flow_tables.cpp
Method PyQDP_TableFlowKeyGet;
Method PyQDP_TableFlowInfoGet;
Method PyQDP_TableFlowRewriteGet;

// config_tables.cpp
Method PyQDP_TableDSCPConfGet;
Method PyQDP_TableUplinkMapGet;

// flow_ops.cpp
Method PyQDP_FlowOpsStatsGet;

}  // namespace qdp
