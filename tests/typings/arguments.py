"""What the recipes of the methods leave open: results that take more than one call to show all of their places, and the
texts of methods that print where they succeed."""

# What else to ask for, to see a value in every place of a result.
MORE_ARGUMENTS = {"GetPortConf": (0, 4), "DumpLBStats": (0, 0, 16384, 0, 64)}

# What a method prints although nothing fails.
TEXTS_OF_SUCCESS = {
    "DumpDecapFlowTable": "Dump Decap  Flow Not supported below 2.10.0.0\n",
    "DumpDecapSaFlowTable": "Dump Decap  Flow Not supported below 2.10.0.0\n",
    "DumpPortFlow": "Dump Port Flow Not supported below 2.10.0.0\n",
    "FPOHWDestroy": "Not supported in release build.\n\n",
}
