// Direct calls of the module's plain functions. Every buffer is exactly as long as the function's contract says, so
// that a byte too many is seen.
#include "fuzz/exported.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "core/render.h"
#include "datapath/flowcache/flowcache.h"
#include "datapath/ports/ports.h"
#include "datapath/uplink/uplink.h"
#include "fuzz/contract.h"
#include "fuzz/fault.h"
#include "fuzz/texts.h"
#include "platform/flowcache.h"
#include "smartnic/channel/table_read.h"
#include "switchid/identity.h"

extern "C" {
void Warning(...);
void Panic(...);
void Log(...);
}

namespace fuzz {

namespace {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

// A block of its own, at an odd address if the input wants so, filled from the input.
class Block {
public:
    Block(Input& input, size_t size) : shift_{input.byte() % size_t{2}}, size_{size}
    {
        memory_.reset(static_cast<uint8_t*>(std::malloc(shift_ + size)));
        if (!memory_)
            fault("the machine lacks memory");
        fill({data(), size}, input.run());
    }

    uint8_t* data() const { return memory_.get() + shift_; }
    char* text() const { return reinterpret_cast<char*>(data()); }
    size_t size() const { return size_; }

private:
    std::unique_ptr<uint8_t, FreeMemory> memory_;
    size_t shift_;
    size_t size_;
};

// Arrays of words are aligned, as a C caller's are.
template <class Word>
std::unique_ptr<Word[]> words(Input& input, size_t count)
{
    std::unique_ptr<Word[]> array{new Word[count]};
    fill({reinterpret_cast<uint8_t*>(array.get()), count * sizeof(Word)}, input.run());
    return array;
}

template <uint32_t load()>
void load_config(Input&)
{
    load();
}

void log(Input& input)
{
    const std::string text = take_text(input);
    Warning(text.c_str(), 1, 2.5, text.c_str());
    Panic(text.c_str());
    Log(text.c_str(), nullptr);
}

template <uint32_t resolve(const char*, char*), size_t name_bytes>
void resolve_name(Input& input)
{
    const std::string name = take_text(input);
    resolve(name.c_str(), Block{input, name_bytes}.text());
}

void find_port(Input& input)
{
    uintptr_t words[6];
    for (uintptr_t& word : words)
        word = input.number();
    const int found = DVPortExist(words[0], words[1], words[2], words[3], words[4], words[5]);
    if (found != 0 && found != 1)
        fault("DVPortExist: %d", found);
}

void render_mac(Input& input)
{
    const Block mac{input, mac_bytes};
    const Block out{input, qdp::mac_text_bytes};
    if (MACToStr(mac.data(), out.text()) != out.text() || std::strlen(out.text()) + 1 != qdp::mac_text_bytes)
        fault("MACToStr: not its output");
}

void render_flags(Input& input)
{
    const auto flags = static_cast<uint32_t>(input.number());
    const Block out{input, input.number() % 512};
    FlagsToStr(flags, out.text(), static_cast<uint32_t>(out.size()));
    if (out.size() != 0 && strnlen(out.text(), out.size()) == out.size())
        fault("FlagsToStr: no NUL");
}

void render_key(Input& input)
{
    const Block key{input, sizeof(FlowKey)};
    const Block out{input, qdp::flow_key_text_bytes};
    FCFlowKeyToStr(key.data(), out.text());
    if (strnlen(out.text(), out.size()) == out.size())
        fault("FCFlowKeyToStr: no NUL");
}

// An action area with its group and its tail at arbitrary places. The tail may begin before the area does.
class Actions {
public:
    explicit Actions(Input& input)
        : group_offset{static_cast<uint32_t>(input.number() % 1024)}, tail_length{static_cast<uint32_t>(input.number() %
                                                                                                        1024)},
          block_{input, sizeof(FlowActionTail) + bytes_behind_start()}, entry_{input,
                                                                               offsetof(FlowEntry, hardware_hits)}
    {
    }

    const uint8_t* area() const { return block_.data() + sizeof(FlowActionTail); }
    const uint8_t* group() const { return area() + group_offset; }
    const uint8_t* entry() const { return entry_.data(); }

    uint32_t group_offset;
    uint32_t tail_length;

private:
    // As far as the instances of a tail may reach, which are as many as one byte can tell.
    size_t bytes_behind_start() const
    {
        constexpr size_t instances = sizeof(FlowActionTail::instances) + UINT8_MAX * routing_instance_bytes;
        return std::max({sizeof(FlowActionArea), group_offset + sizeof(FlowActionGroup), tail_length + instances});
    }

    Block block_;
    Block entry_;  // what is read of it
};

void render_actions(Input& input)
{
    const Actions actions{input};
    const Block out{input, input.number() % 1024};
    FCActionsToStr(actions.area(), out.text(), static_cast<uint32_t>(out.size()), actions.tail_length, actions.entry(),
                   actions.group_offset);
}

void render_group(Input& input)
{
    const Actions actions{input};
    const Block out{input, input.number() % 1024};
    FCActionGroupToStr(actions.area(), actions.group(), out.text(), out.text() + out.size(), actions.tail_length,
                       actions.entry());
}

void list_ports(Input& input)
{
    const auto count = static_cast<uint32_t>(input.number());
    const auto bitmap = words<uint64_t>(input, 2);
    check_outcome("PyQDP_CreatePortList", PyQDP_CreatePortList(count, bitmap.get()), false);
}

void list_vlans(Input& input)
{
    const auto count = static_cast<uint32_t>(input.number());
    const auto vlans = words<uint16_t>(input, static_cast<uint16_t>(count));
    check_outcome("PyQDP_CreateVlanList", PyQDP_CreateVlanList(count, vlans.get()), false);
}

void render_netq_info(Input& input)
{
    const size_t size = input.number() % 32768;
    auto* info = static_cast<uint8_t*>(std::malloc(size));
    fill({info, size}, input.run());
    check_outcome("PyQDP_PortNetQInfo", PyQDP_PortNetQInfo(info, static_cast<uint32_t>(size)), false);
}

void set_filter_types(Input& input)
{
    const std::string alias = take_text(input);
    PyQDPSetFiltTypeProp(alias.c_str(), input.take<uint16_t>());
}

constexpr size_t most_entry_bytes = 4096;

void read_by_index(Input& input)
{
    const auto index = static_cast<uint32_t>(input.number());
    const auto table = static_cast<uint16_t>(input.number());
    const Block entry{input, input.number() % most_entry_bytes};
    auto length = static_cast<uint32_t>(entry.size());
    QdpGetIndexTableData(index, table, entry.data(), &length);
}

void read_by_key(Input& input)
{
    constexpr size_t most_key_bytes = 3 * 65536;  // beyond what a request can tell
    const Block key{input, input.number() % most_key_bytes};
    const auto table = static_cast<uint16_t>(input.number());
    const Block entry{input, input.number() % most_entry_bytes};
    auto length = static_cast<uint32_t>(entry.size());
    QdpGetGenericKeyTableData(key.data(), static_cast<uint32_t>(key.size()), table, entry.data(), &length);
}

constexpr ExportedFunction functions[] = {
    {"LibraryInit", load_config<LibraryInit>},
    {"DVSLoadConfig", load_config<DVSLoadConfig>},
    {"Warning, Panic and Log", log},
    {"DVSAliasToSwitchId", resolve_name<DVSAliasToSwitchId, switch_id_bytes>},
    {"DVSAliasToSwitchIdAllTypes", resolve_name<DVSAliasToSwitchIdAllTypes, switch_id_bytes>},
    {"DVSAliasToPortsetName", resolve_name<DVSAliasToPortsetName, portset_name_bytes>},
    {"DVSPortsetNameToAlias", resolve_name<DVSPortsetNameToAlias, portset_name_bytes>},
    {"DVPortExist", find_port},
    {"MACToStr", render_mac},
    {"FlagsToStr", render_flags},
    {"FCFlowKeyToStr", render_key},
    {"FCActionsToStr", render_actions},
    {"FCActionGroupToStr", render_group},
    {"PyQDP_CreatePortList", list_ports},
    {"PyQDP_CreateVlanList", list_vlans},
    {"PyQDP_PortNetQInfo", render_netq_info},
    {"PyQDPSetFiltTypeProp", set_filter_types},
    {"QdpGetIndexTableData", read_by_index},
    {"QdpGetGenericKeyTableData", read_by_key},
};

}  // namespace

std::span<const ExportedFunction> exported_functions()
{
    return functions;
}

}  // namespace fuzz
