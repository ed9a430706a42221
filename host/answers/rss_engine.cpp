// Answers about RSS engines.
#include <algorithm>

#include "host/answers/answer.h"

namespace host {

namespace {

// A port without engines has an empty list.
uint32_t get_rss_engine_list(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* found = host.port(switch_number, port);
    if (!found)
        return status_not_found;
    RSSEngineList list{};
    list.count = static_cast<uint32_t>(std::min<size_t>(found->rss_engines.size(), max_rss_engines));
    std::copy_n(found->rss_engines.begin(), list.count, list.entries);
    return output.put(list);
}

const Answer rss_engine_answers[] = {
    {"Qdp_Get_RSS_Engine_List", get_rss_engine_list},
};

}  // namespace

}  // namespace host
