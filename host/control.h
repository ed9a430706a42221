// The control interface of the embedded host, for tests and scripts: script, fail and record the calls of operations,
// steer the clock, put the host back. Plain C functions, so that any language can call them in the same process.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

// Puts the host back that the process began with: its state, a real clock, no scripted answers, no failures, no delays,
// no recorded calls; or the first answers of the capture that QDP_HOST_REPLAY names.
void qdp_host_reset(void);

// Answers from this capture file instead of the state; null ends that. Returns 0, or -1 and changes nothing when the
// file is broken. A file that QDP_HOST_REPLAY names and that is broken makes every operation fail instead, and
// "qdp-host: FILE: PLACE: ..." is printed once.
int qdp_host_replay(const char* path);

// What was wrong the last time: "FILE: PLACE: ...". Valid until the next call of this function.
const char* qdp_host_error(void);

// Keeps a copy of the present state, its clock included, and returns its number; puts it back, as often as wanted, which
// returns 0, or -1 when there is no such copy; forgets it. Scripted answers, failures and delays are not part of it.
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

// The recorded calls as a JSON array of {"operation": name, "arguments": [...]}; valid until the next call of this
// function. An argument is a number; a text or null; {"bytes": hex}; {"capacity": n} for an output, null without one.
const char* qdp_host_calls(void);

// The names of the operations that the stand-ins call by, and of those that are answered from the state, as a JSON
// array each; valid until the next call of the same function.
const char* qdp_host_operations(void);

// Values that the switch state library handed out and has not got back.
size_t qdp_host_values_out(void);

// Stops the clock; and moves a stopped clock on.
void qdp_host_freeze_time(void);
void qdp_host_advance_time(uint64_t nanoseconds);

}  // extern "C"
