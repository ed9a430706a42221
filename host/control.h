// The control interface of the embedded host, for tests and scripts: script, fail and record the calls of operations,
// steer the clock, put the host back. Plain C functions, so that any language can call them in the same process.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

// Every function may be called by any thread at any time; a text is valid until the same thread calls the same function
// again.

// Puts the host back to its scenario: its state, a real clock, no scripted answers, no failures, no delays, no recorded
// calls. The scenario is the one that QDP_HOST_SCENARIO names, else the default one; a capture that QDP_HOST_REPLAY
// names answers in its place, from its first answers on. The files are read at the first call that needs them. What the
// switch state library returned before a reset (handles, texts, values of its own) is invalid after it; a load, a
// replay and a restore leave it valid.
void qdp_host_reset(void);

// Replaces the host by the one that the scenario in this file describes; null is the default scenario. What is scripted
// and recorded stays. Returns 0, or -1 when the scenario could not be read: every operation fails then.
int qdp_host_load(const char* path);

// Does so with the text of a scenario, which errors call "scenario".
int qdp_host_load_text(const char* text);

// Answers from this capture file in the place of the scenario's host; null ends that. Returns as qdp_host_load does.
int qdp_host_replay(const char* path);

// What is wrong with a capture file, or null; nothing changes.
const char* qdp_host_check_capture(const char* path);

// Whether a capture answers. There is no state then: no scenario, no summary, no snapshot, and nothing to restore.
int qdp_host_is_replaying(void);

// What was wrong with the scenario or the capture, or null: "FILE: PLACE: ...". The first operation that fails for it
// prints "qdp-host: FILE: PLACE: ..." to standard error, once a process.
const char* qdp_host_error(void);

// The scenario of the host as it stands, and how many of each kind it has; null when there is none.
const char* qdp_host_scenario(void);
const char* qdp_host_summary(void);

// The version of the build, "1.0.0".
const char* qdp_host_version(void);

// What is wrong with a scenario, a file or a name; null when it is valid. The host of the process stays as it is. Valid
// until the next call of this function.
const char* qdp_host_check(const char* scenario);

// A scenario, by its file or its name, with all that follows from it written out, but for lists whose entries repeat
// very often: the text of a scenario. When the scenario is not valid, what is wrong with it, and *is_valid is 0. The
// host of the process stays as it is. Valid until the next call of this function.
const char* qdp_host_completed(const char* scenario, int* is_valid);

// Keeps a copy of the present state, its clock included, and returns its number, 0 when there is no state; puts it
// back, as often as wanted, which returns 0, or -1 when there is no such copy or no state; forgets it. Scripted
// answers, failures and delays are not part of it.
uint64_t qdp_host_snapshot(void);
int qdp_host_restore(uint64_t snapshot);
void qdp_host_forget(uint64_t snapshot);

// Adds a scripted answer to the end of the operation's queue; each call takes the next one instead of an answer from
// the state. `result` is the status. Returns 0, or -1 for an unknown operation, as do the next three.
int qdp_host_script(const char* operation, uint64_t result);

// What the scripted answer added last puts into its n-th output: bytes, cut at the capacity; an output without bytes
// stays untouched. The size word is set to the number of bytes, or to what qdp_host_script_size says.
int qdp_host_script_output(const char* operation, unsigned output, const void* bytes, size_t size);
int qdp_host_script_size(const char* operation, unsigned output, uint32_t size);

// Makes the result of the scripted answer added last a pointer to these bytes, for operations that return a text.
int qdp_host_script_text(const char* operation, const void* bytes, size_t size);

// Fails calls of the operation with this status, or with a null pointer where it returns a pointer: from the n-th from
// now on (1 is the next), so many times; 0 times is for ever. Returns 0, or -1 for an unknown operation.
int qdp_host_fail(const char* operation, uint32_t status, unsigned nth, unsigned times);

// Makes calls of the operation take so much longer, in real time; counted like failures.
int qdp_host_delay(const char* operation, uint64_t nanoseconds, unsigned nth, unsigned times);

// Starts recording calls anew, or stops.
void qdp_host_record(int on);

// The recorded calls as a JSON array of {"operation": name, "arguments": [...], "result": ..., "outputs": [...]}. An
// argument is a number; a text or null; {"bytes": hex}; {"capacity": n, "is_null": is} for an output. A result is a
// status, {"bytes": hex} of a text, a handle, or null. An output is {"bytes": hex}, or null when the call failed.
const char* qdp_host_calls(void);

// What is known of an operation, {"result": "none", "status", "text" or "handle", "outputs": how many} as JSON, or null
// for an unknown one.
const char* qdp_host_operation(const char* name);

// The names of the operations that are answered from the state, as a JSON array.
const char* qdp_host_operations(void);

// How many values of the switch state library their callers have not released.
size_t qdp_host_unreleased_values(void);

// Stops the clock, at a full second; and moves it on, whether it is stopped or not.
void qdp_host_freeze_time(void);
void qdp_host_advance_time(uint64_t nanoseconds);

// How long the host has been up, in nanoseconds; 0 when there is none.
uint64_t qdp_host_time(void);

// Shares the host of this process with others: opens a socket, for its owner alone, and returns what is wrong, or null;
// then serves all processes whose variable QDP_HOST names the socket, until SIGTERM, SIGINT or SIGHUP, and removes it.
// A pipe that is given ends the service too, once nobody holds its other end; -1 is none. The variable is read when the
// stand-ins are loaded. A process that has it makes its calls there: what these functions do in it concerns its own
// host, which its calls do not reach.
const char* qdp_host_listen(const char* socket);
void qdp_host_serve(int pipe);

}  // extern "C"
