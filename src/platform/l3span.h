// Operations and records of the encapsulation of mirrored (L3 SPAN) traffic towards a destination address.
#pragma once

#include "platform/limits.h"

struct L3SPANRequest {
    uint32_t switch_number;
    uint32_t flag_and_value;  // low byte: not 0 for an IPv6 destination; above it the low 24 bits of the caller's value
    uint8_t destination[16];  // in network byte order; IPv4 uses the first four bytes
};
static_assert(offsetof(L3SPANRequest, flag_and_value) == 4);
static_assert(offsetof(L3SPANRequest, destination) == 8);
static_assert(sizeof(L3SPANRequest) == 24);

// Both forms lie over the same bytes; the IPv4 pair begins within the IPv6 source.
union L3SPANAddresses {
    struct {
        uint8_t source[16];
        uint8_t destination[16];
    } ipv6;
    struct {
        uint8_t reserved[4];
        uint8_t source[4];
        uint8_t destination[4];
    } ipv4;
};

struct L3SPANEncapsulation {
    uint8_t destination_mac[mac_bytes];
    uint8_t source_mac[mac_bytes];
    uint8_t reserved[10];
    L3SPANAddresses addresses;
};

struct L3SPANRecord {
    uint32_t source_port;
    uint16_t mtu;
    uint16_t destination_port;
    int8_t is_valid;
    int8_t is_geneve;
    uint8_t geneve_is_ipv6;
    uint8_t gre_is_ipv6;
    L3SPANEncapsulation geneve;  // only when is_geneve is set
    L3SPANEncapsulation gre;
};
static_assert(offsetof(L3SPANRecord, is_valid) == 8);
static_assert(offsetof(L3SPANRecord, geneve.destination_mac) == 12);
static_assert(offsetof(L3SPANRecord, geneve.addresses.ipv6.source) == 34);
static_assert(offsetof(L3SPANRecord, geneve.addresses.ipv4.source) == 38);
static_assert(offsetof(L3SPANRecord, geneve.addresses.ipv4.destination) == 42);
static_assert(offsetof(L3SPANRecord, geneve.addresses.ipv6.destination) == 50);
static_assert(offsetof(L3SPANRecord, gre.destination_mac) == 66);
static_assert(offsetof(L3SPANRecord, gre.addresses.ipv4.source) == 92);
static_assert(offsetof(L3SPANRecord, gre.addresses.ipv6.destination) == 104);
static_assert(sizeof(L3SPANRecord) == 120);

extern "C" {

uint32_t Qdp_Get_L3SPAN_Record(const L3SPANRequest* request, L3SPANRecord* answer, uint32_t* size);

}  // extern "C"
