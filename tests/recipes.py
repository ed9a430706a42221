"""For every method, arguments with which it succeeds on the embedded host as it is built in."""

RECIPES = {
    "ListSwitches": (),
    "ListPorts": (0,),
    "GetPortStats": (0, 3),
    "GetRepPortStats": (),
}
