"""What is documented of failures: the texts that the module prints, and what methods return and raise."""

import re

# Every text that the module prints.
TEXTS = [
    "Dump Decap  Flow Not supported below 2.10.0.0\n",
    "Dump Port Flow Not supported below 2.10.0.0\n",
    "Error in geting host pfs\n",
    "Failed clear switch flow table\n",
    "Failed to %s advanced stats.\n",
    "Failed to %s panic on Tx hang.\n",
    "Failed to %s switch flow cache.\n",
    "Failed to add a MAC entry.",
    "Failed to allocate NetQ Info resp.\n",
    "Failed to allocate RSS engine list.\n",
    "Failed to allocate buffer for dict\n",
    "Failed to allocate buffer for plist\n",
    "Failed to allocate buffer.\n",
    "Failed to allocate mac table.\n",
    "Failed to allocate memory for contextReq\n",
    "Failed to allocate memory for contextResp\n",
    "Failed to allocate memory.\n",
    "Failed to allocate memory\n",
    "Failed to allocate port list.\n",
    "Failed to allocate stats tuple.\n",
    "Failed to allocate switch mac table.\n",
    "Failed to allocate uplink stats counter.\n",
    "Failed to allocate uplink stats.\n",
    "Failed to clear mac table.\n",
    "Failed to convert destination IP address to binary form.\n\n",
    "Failed to convert destination IPv4 address to binary form.\n\n",
    "Failed to convert source IPv4 address to binary form.\n\n",
    "Failed to create/update the lif port\n",
    "Failed to create/update the mux vlan port\n",
    "Failed to delete MAC entry.\n",
    "Failed to delete a port\n",
    "Failed to dump HW table data.\n",
    "Failed to dump Mirror table data.\n",
    "Failed to dump ipfix table entry.\n",
    "Failed to find dvs ID for dvs alias %s.\n",
    "Failed to get DVS property com.tarnix.wyx.qdp.fpo\n",
    "Failed to get FPO flow stats update config\n",
    "Failed to get FPO revalidation config\n",
    "Failed to get FPO uplink stats.\n",
    "Failed to get FPO uplink status.\n",
    "Failed to get HW CT entry\n",
    "Failed to get RSS override info.\n",
    "Failed to get advanced stats counter.\n",
    "Failed to get aging interval\n",
    "Failed to get borea log level.\n",
    "Failed to get current FPO flow stats config\n",
    "Failed to get current FPO revalidation config\n",
    "Failed to get current support FilterClasses on switch\n",
    "Failed to get dscp conf\n",
    "Failed to get host pfs\n",
    "Failed to get lif port list\n",
    "Failed to get lif stats\n",
    "Failed to get mux VLAN info\n",
    "Failed to get p4 egress stats\n",
    "Failed to get p4 ingress stats\n",
    "Failed to get p4 table info\n",
    "Failed to get panic on Tx hang configuration.\n",
    "Failed to get port TX uplink.\n",
    "Failed to get port conntrack stats\n",
    "Failed to get port stats\n",
    "Failed to get portset name from dvs %s.\n",
    "Failed to get private stats.\n",
    "Failed to get refresh packet injection config\n",
    "Failed to get shadow port list\n",
    "Failed to get supported filter classes for %s.\n",
    "Failed to get table data\n",
    "Failed to get uplink stats.\n",
    "Failed to inject traffic.\n\n",
    "Failed to list RSS engines.\n",
    "Failed to migrate filter of port %d.\n",
    "Failed to migrate port.\n",
    "Failed to perform cache invalidation\n",
    "Failed to reset port.\n",
    "Failed to retrieve RSS Engine list.\n",
    "Failed to retrieve flow stats.\n",
    "Failed to retrieve flow table.\n\n",
    "Failed to retrieve list of ports.\n",
    "Failed to retrieve list of switches.\n",
    "Failed to retrieve mac table.\n",
    "Failed to retrieve port conf.\n",
    "Failed to retrieve port stats.\n",
    "Failed to retrieve slowpath port stats.\n",
    "Failed to retrieve switch mac table.\n",
    "Failed to set DSCP conf\n",
    "Failed to set DVS property %s\n",
    "Failed to set DVS property com.tarnix.wyx.qdp.fpo\n",
    "Failed to set FPO flow stats update config\n",
    "Failed to set FPO revalidation config\n",
    "Failed to set RSS override\n",
    "Failed to set aging interval\n",
    "Failed to set borea log level.\n",
    "Failed to set dict item.\n",
    "Failed to set host PFs\n",
    "Failed to set list item.\n",
    "Failed to set refresh packet injection config\n",
    "Failed to set tuple item.\n",
    "Failed to set uplink mac learn policy.\n",
    "Failed to set uplink stats counter.\n",
    "Failed to unpin port.\n",
    "Failed to update mux vlan based port\n",
    "Failed to update the defaultVLAN of a port\n",
    "Failed to update the lif port\n",
    "Format of property %s value is from unknown version.\n",
    "Format of property com.tarnix.wyx.qdp.fpo is invalid\n",
    "Invalid action\n",
    "Invalid filter Class provided, only VLANMAC is accepted as input\n",
    "Invalid metric name %s.\n",
    "Invalid response returned.\n",
    "Invalid traffic format at traffic %d.\n\n",
    "Memory allocation failed.\n\n",
    "Not supported in release build.\n\n",
    "OSError: Failed to issue FPO offload ICMP Echo command\n",
    "OSError: Failed to issue QDP command\n",
    "Please disable automatic thread load balancing.\n\n",
    "Property %s value length is odd.\n",
    "Query mgr failed.\n\n",
    "TypeError: Failed to get lcore ID bitmap.\n\n",
    "TypeError: Failed to get mux mode.\n\n",
    "TypeError: Failed to init QDP mbuf fastslabs.\n\n",
    "TypeError: Invalid parameter passed.\n",
    "TypeError: Invalid parameter passed.\n\n",
    "TypeError: Invalid startIndex passed.\n",
    "TypeError: Invalid switch ID passed.\n",
    "Unexpected response size %u, expected: %u\n",
    "ValueError: Failed to dump debug buffer: %#x.\n",
    "ValueError: Failed to flush debug buffer: %#x.\n",
    "ValueError: Failed to get LRO.\n\n",
    "ValueError: Failed to get advanced stats status.\n\n",
    "ValueError: Failed to get flow timeout.\n\n",
    "ValueError: Failed to get minimum flow layer of switch %u\n\n",
    "ValueError: Failed to list device affinity.\n",
    "ValueError: Failed to read property data length.\n",
    "ValueError: Failed to set LRO.\n\n",
    "ValueError: Failed to set device affinity.\n",
    "ValueError: Failed to set flow timeout.\n\n",
    "ValueError: Failed to set port property.\n",
    "ValueError: Failed to set switch minFlowLayer.\n\n",
    "ValueError: Invalid property data length.\n",
    "ValueError: Ring size must be %u aligned.\n",
]

PLACEHOLDERS = {"%s": ".*", "%u": "[0-9]+", "%d": "-?[0-9]+", "%#x": "0x[0-9a-f]+"}


def pattern(text):
    for placeholder, matching in PLACEHOLDERS.items():
        text = text.replace(re.escape(placeholder), matching)
    return text


PRINTED = re.compile("(" + "|".join(pattern(re.escape(text)) for text in TEXTS) + ")+")

# What a method returns when the platform refuses, where that is not None.
RETURNED = {
    "SetLBMetric": False,
    "SetSwitchMinFlowLayer": False,
    "EnableFPO": False,
    "InitMbufFastslabs": False,
    "SetSwitchMetaFlow": 0,
}

# Methods that print and return NULL without an exception.
RETURNING_NULL = ["GetUplinkStats"]

# Methods that raise.
UNKNOWN_ALIAS = (ValueError, "cannot find dvs alias.")
RAISED = {
    "SetLBParam": [UNKNOWN_ALIAS, (OSError, "failed to set parameter.")],
    "GetLBParams": [UNKNOWN_ALIAS, (OSError, "failed to get parameters.")],
    "DumpLBStats": [(OSError, "Failed to dump LB stats. Please see hostcore.log")],
}

# A switch whose portset property cannot be read goes by another name, which the datapath does not know.
PORTSET = ["DVSState_HostPropLookup", "DVSData_Data", "DVS_SwitchId"]

# Methods that fail without a word, and the operations whose refusal they say nothing about.
SILENT = {
    "GetL3SPANRecord": ["Qdp_Get_L3SPAN_Record"],
    "GetLBMetric": ["Qdp_GetLBParams", *PORTSET],
    "SetLBMetric": ["Qdp_GetLBParams", *PORTSET],
    "GetSwitchNUMATeam": ["Qdp_GetSwitchNUMATeam", *PORTSET],
    "InitMbufFastslabs": [
        "DVSState_SwitchForEach",
        "DVSState_GlobalPropForEach",
        "DVSData_Name",
        "DVSData_Data",
    ],
    "SetOffloadFlows": ["Qdp_Set_Offload_Flows", *PORTSET],
    "P4AppSet": ["Qdp_P4AppSet"],
    "P4AppGet": ["Qdp_P4AppGet"],
    "P4UKLatencySet": ["Qdp_P4UKLatencySet"],
    "P4UKLatencyDump": ["Qdp_P4UKLatencyDump"],
}

# Methods that succeed without an operation: another one answers, there is a default, the result does not tell, or
# another switch or property is the one looked for. Some print a text all the same.
GOES_ON = {
    "GetUplinkStats": ["Qdp_Get_Uplink_Priv_Stats_Len"],
    "GetUplinkRingSize": ["DVSHCK_PortDataGet"],
    "GetSwitchFilterTypes": ["DVSHCK_HostPropGet"],
    "SetSwitchFilterTypes": [
        "DVSHCK_HostPropGet",
        "DVSHCK_HostPropSet",
        "DVSState_SwitchFindByAlias",
        "DVS_ClassName",
        "DVS_SwitchId",
    ],
    "GetLBMetric": ["DVSHCK_HostPropGet"],
    "SetLBMetric": ["DVSHCK_HostPropGet"],
    "GetSwitchNUMATeam": ["DVSHCK_HostPropGet"],
    "GetSwitchBurstSize": ["DVSHCK_HostPropGet"],
    "GetSwitchOverlayL2Flow": ["DVSHCK_HostPropGet"],
    "GetSwitchMetaFlow": ["DVSHCK_HostPropGet"],
    "GetFPOEnabled": ["DVSHCK_HostPropGet"],
    "EnableFPO": ["DVSHCK_HostPropGet", "DVSHCK_HostPropSet"],
    "InitMbufFastslabs": ["DVSState_GlobalPropForEach", "DVSData_Name"],
    "SetOffloadFlows": ["DVSHCK_HostPropSet"],
}
