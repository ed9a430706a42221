"""The lines of a snapshot file.

A snapshot is text, one JSON object a line:

    {"qdp-snapshot": 1, ...}                                      the first: the form's version, and where and when
    {"reading": 1, "section": "ports", "time": seconds}           a section of a reading begins
    {"call": ["ListPorts", [0]], "result": [...], "us": 12}       a call and its answer, in microseconds
    {"call": [...], "error": {"class": ..., "text": ...}, "us": 12}   one that failed
    {"alias": [portset name, alias]}                              an alias of a switch
    {"setting": path, "value": ...}                               a setting that was read
    {"ended": "ports", "how": "read" or why not}                  the section has ended
    {"capture": {...}}                                            a line of the capture of the platform's calls
    {"sha256": hex, "lines": count}                               the last: of all that comes before it
"""

import json
import time

VERSION = 1
MAGIC = b'{"qdp-snapshot": '
CALL = b'{"call": '
CAPTURE = b'{"capture": '
END = b'{"sha256": '
TUPLE = "()"  # the only key of a dict that stands for a tuple

# The methods whose answers hold tuples, which JSON does not have.
_WITH_TUPLES = frozenset(["DumpLBStats", "GetUplinkRingSize", "GetUplinkStats", "ListLCoreIDs"])


def _tagged(value):
    if isinstance(value, tuple):
        return {TUPLE: [_tagged(each) for each in value]}
    if isinstance(value, list):
        return [_tagged(each) for each in value]
    if isinstance(value, dict):
        return {key: _tagged(each) for key, each in value.items()}
    return value


def _untagged(value):
    return tuple(value[TUPLE]) if len(value) == 1 and TUPLE in value else value


_encoded = json.JSONEncoder(check_circular=False).encode  # what is written holds itself nowhere


def dumped(value):
    return _encoded(value).encode() + b"\n"


def loaded(line):
    return json.loads(line.decode(), object_hook=_untagged)


def key_of(method, arguments):
    """What a call goes by: tuples among its arguments are lists in the file."""
    return json.dumps([method, arguments])


def call_line(method, arguments, result, microseconds):
    if method in _WITH_TUPLES:
        result = _tagged(result)
    return dumped({"call": [method, arguments], "result": result, "us": microseconds})


def section_line(reading, section):
    return dumped({"reading": reading, "section": section, "time": time.time(), "clock": time.monotonic()})


def error_line(method, arguments, error, microseconds):
    about = {"class": type(error).__name__, "text": error.text, "hint": error.hint}
    return dumped({"call": [method, arguments], "error": about, "us": microseconds})
