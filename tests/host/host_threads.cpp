// The embedded host in a program of its own: threads that load, restore and call at once, clients of a host that is
// served, and answers that are wrong.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include "host/answers/answer.h"
#include "host/control.h"
#include "host/link/shared_host.h"
#include "platform/qdp_control.h"
#include "platform/switch_state.h"

namespace {

std::atomic<bool> is_over{false};

#define EXPECT(condition) ((condition) ? void() : fail(#condition, __LINE__))

void fail(const char* condition, int line)
{
    std::fprintf(stderr, "host_threads.cpp:%d: %s does not hold\n", line, condition);
    std::_Exit(3);
}

void load()
{
    EXPECT(qdp_host_load(nullptr) == 0);
}

void restore()
{
    const uint64_t snapshot = qdp_host_snapshot();
    EXPECT(snapshot != 0);
    for (int i = 0; i < 20; ++i)
        EXPECT(qdp_host_restore(snapshot) == 0);
    qdp_host_forget(snapshot);
    EXPECT(qdp_host_restore(snapshot) == -1);
}

// Every scenario that is loaded is the default one, whose switch 0 has a port 0.
void read_counters()
{
    PortCounters counters;
    uint32_t size = sizeof counters;
    EXPECT(Qdp_Get_Port_Stats(0, 0, &counters, &size) == 0);
    EXPECT(size == sizeof counters);
}

// Of the values in these tests, each stands for one that a thread set whole.
void write_setting()
{
    static std::atomic<uint32_t> next{1};
    uint32_t seconds = 0;
    EXPECT(Qdp_Set_Flow_Timeout(next++ % 100 + 1) == 0);
    EXPECT(Qdp_Get_Flow_Timeout(&seconds) == 0);
    EXPECT(seconds > 0 && seconds <= 300);
}

// As LibraryInit does it; one thread, since a reset ends the handles that others hold.
void resolve_switches()
{
    void* state = nullptr;
    uint32_t length = 0;
    EXPECT(DVSState_ConfigReset() == 0);
    EXPECT(DVSHCK_StateGet(&state, &length) == 0);
    EXPECT(DVSState_ConfigDeserialize(state, length) == 0);
    std::free(state);
    DVSState_SwitchForEach(
        [](DVSSwitch* handle, void*) -> uint32_t {
            EXPECT(DVS_SwitchId(handle)[0] != '\0');
            void* value = nullptr;
            uint32_t value_length = 0;
            if (DVSHCK_HostPropGet(DVS_SwitchId(handle), portset_property, &value, &value_length) == 0)
                DVSHCK_DataFree(value);
            return 0;
        },
        nullptr);
}

void control()
{
    qdp_host_record(1);
    EXPECT(qdp_host_script("Qdp_Init_Mbuf_Fastslabs", 7) == 0);
    EXPECT(qdp_host_fail("Qdp_Unpin_Port", 9, 1, 1) == 0);
    EXPECT(qdp_host_delay("Qdp_Init_Mbuf_Fastslabs", 1000, 1, 1) == 0);
    EXPECT(Qdp_Init_Mbuf_Fastslabs() == 7);
    EXPECT(Qdp_Unpin_Port(0, 0, 0) == 9);
    qdp_host_freeze_time();
    qdp_host_advance_time(1'000'000);
    EXPECT(qdp_host_summary() != nullptr);
    EXPECT(qdp_host_calls() != nullptr);
    qdp_host_record(0);
}

int run_threads(double seconds)
{
    std::atomic<unsigned> least_rounds{~0u};
    std::vector<std::thread> threads;
    for (void (*step)() :
         {load, restore, read_counters, read_counters, write_setting, write_setting, resolve_switches, control})
        threads.emplace_back([step, &least_rounds] {
            unsigned rounds = 0;
            for (; !is_over; ++rounds)
                step();
            for (unsigned least = least_rounds; rounds < least;)
                if (least_rounds.compare_exchange_weak(least, rounds))
                    break;
        });
    std::this_thread::sleep_for(std::chrono::duration<double>{seconds});
    is_over = true;
    for (std::thread& thread : threads)
        thread.join();
    std::printf("%zu threads, each %s\n", threads.size(), least_rounds > 0 ? "at work" : "or not at all");
    return 0;
}

// --- Clients of the host that this process serves ---

template <class... Parameters>
uint64_t call_shared(host::SharedHost& shared, std::vector<void*>& steps, const char* operation,
                     Parameters... parameters)
{
    const host::Signature& signature = *host::find_signature(operation);
    const uint64_t words[] = {host::word_of(parameters)..., 0};
    std::vector<host::Argument> arguments(signature.num_arguments());
    host::make_arguments(signature, words, arguments.data());
    return shared.call(signature, arguments, steps);
}

// As a process does that looks up a switch, and then ends with a value that it has not given back.
void use_shared(const char* path)
{
    host::SharedHost shared{path};
    std::vector<void*> steps;
    void* value = nullptr;
    uint32_t length = 0, seconds = 0;
    EXPECT(call_shared(shared, steps, "DVSHCK_StateGet", &value, &length) == 0);
    EXPECT(call_shared(shared, steps, "DVSState_ConfigDeserialize", value, length) == 0);
    std::free(value);
    call_shared(shared, steps, "DVSState_SwitchForEach", use_shared, uint64_t{0});
    EXPECT(steps.size() == 4);
    const uint64_t id = call_shared(shared, steps, "DVS_SwitchId", steps[0]);
    EXPECT(id != 0);
    for (int i = 0; i < 2; ++i)
        EXPECT(call_shared(shared, steps, "DVSHCK_HostPropGet", id, portset_property, &value, &length) == 0);
    call_shared(shared, steps, "DVSHCK_DataFree", value);
    EXPECT(call_shared(shared, steps, "Qdp_Set_Flow_Timeout", 7) == 0);
    EXPECT(call_shared(shared, steps, "Qdp_Get_Flow_Timeout", &seconds) == 0);
    EXPECT(seconds == 7 || seconds == 10);  // of a host that was loaded meanwhile
}

int share(const char* path)
{
    EXPECT(qdp_host_listen(path) == nullptr);
    std::vector<std::thread> threads;
    std::thread server{qdp_host_serve, -1};
    for (int i = 0; i < 6; ++i)
        threads.emplace_back([path] {
            for (int round = 0; round < 30; ++round)
                use_shared(path);
        });
    threads.emplace_back([] {
        for (int round = 0; round < 30; ++round) {
            load();
            restore();
        }
    });
    for (std::thread& thread : threads)
        thread.join();
    kill(getpid(), SIGTERM);
    server.join();
    EXPECT(access(path, F_OK) != 0);
    std::printf("served\n");
    return 0;
}

// A callback of a walk replaces the host that it walks over.
int load_during_walk()
{
    resolve_switches();
    int calls = 0;
    DVSState_SwitchForEach(
        [](DVSSwitch* handle, void* context) -> uint32_t {
            load();
            EXPECT(DVS_ClassName(handle)[0] != '\0');
            ++*static_cast<int*>(context);
            return 0;
        },
        &calls);
    std::printf("%d\n", calls);
    return 0;
}

uint32_t answer_of_two(host::Host&, uint32_t, uint32_t)
{
    return 0;
}

uint32_t throwing_answer(host::Host&)
{
    throw std::runtime_error{"a lack of slabs"};
}

int wrong_count()
{
    const host::Answer answer{"Qdp_Init_Mbuf_Fastslabs", answer_of_two};
    return 0;
}

int unknown_operation()
{
    const host::Answer answer{"Qdp_Nothing", answer_of_two};
    return 0;
}

int throwing()
{
    const host::Answer answer{"Qdp_Init_Mbuf_Fastslabs", throwing_answer};
    std::printf("%x\n", Qdp_Init_Mbuf_Fastslabs());
    return 0;
}

}  // namespace

int main(int count, char** arguments)
{
    const std::string_view mode = count > 1 ? arguments[1] : "";
    if (mode == "threads")
        return run_threads(std::atof(arguments[2]));
    if (mode == "share")
        return share(arguments[2]);
    if (mode == "load-during-walk")
        return load_during_walk();
    if (mode == "wrong-count")
        return wrong_count();
    if (mode == "unknown-operation")
        return unknown_operation();
    if (mode == "throwing")
        return throwing();
    return 2;
}
