// The RSS engines of the uplinks.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/rss_engine.h"

namespace host {

struct Port;

// Of an uplink whose engines nobody describes.
std::vector<RSSEngine> default_rss_engines(const Port& uplink);

}  // namespace host
