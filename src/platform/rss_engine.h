// Operations and records of the RSS engines of a port.
#pragma once

#include "platform/limits.h"

inline constexpr uint32_t max_rss_engines = 64;  // of one port

enum class RSSEngineType : uint32_t { default_engine = 1, device = 2, shared = 3, offload = 4 };

struct RSSEngine {
    uint32_t id;
    uint32_t type;  // an RSSEngineType, as far as it is known
    uint32_t primary_queue;
    uint32_t num_queues;
    uint32_t hash_function;
    uint32_t hash_type;
    uint16_t key_size;
    uint16_t indirection_size;
    uint16_t queues[max_queues];
    uint32_t affinity;
};
static_assert(offsetof(RSSEngine, key_size) == 24);
static_assert(offsetof(RSSEngine, queues) == 28);
static_assert(offsetof(RSSEngine, affinity) == 156);
static_assert(sizeof(RSSEngine) == 160);

struct RSSEngineList {
    uint32_t count;
    RSSEngine entries[max_rss_engines];
};
static_assert(offsetof(RSSEngineList, entries) == 4);
static_assert(sizeof(RSSEngineList) == 10244);

extern "C" {

uint32_t Qdp_Get_RSS_Engine_List(uint32_t switch_number, uint32_t port, RSSEngineList* list);

}  // extern "C"
