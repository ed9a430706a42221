// The log entry points that the switch state library looks for in the process. All that they are told is discarded.
#include "core/python.h"

// Whatever the library passes.
QDP_EXPORT void Warning(...);
QDP_EXPORT void Panic(...);
QDP_EXPORT void Log(...);

void Warning(...) {}

// Not even a panic ends the process or prints.
void Panic(...) {}

void Log(...) {}
