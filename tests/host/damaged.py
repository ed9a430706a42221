"""Replays damaged captures: records methods one by one, damages single lines, and calls the methods on what is left.

    damaged.py record                          run under a recorder: calls every method, prints the lines of each
    damaged.py replay FILE METHODS FIRST END   replays captures damaged with the seeds from FIRST to before END, prints
                                               how many were refused and how many answered
"""

import ctypes
import json
import os
import pathlib
import random
import signal
import sys
import tempfile

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent))

from contract import RECIPES  # noqa: E402
from recipes import is_made_of  # noqa: E402

ENDLESS_SECONDS = 5

# What takes the place of a value in a line.
STRANGE = [None, True, 0, 1, 2, -1, 2**31, 2**32 - 1, 2**32, 2**63, 2**64, 1.5, "", "x", "\u0000", [], {}, [[]]]
STRANGE += [{"handle": 7}, {"bytes": "00"}, {"bytes": "ff" * 100}, {"bytes": ""}, {"bytes": "6"}, {"size": 2**32 - 1}]


def record(capture):
    """Prints for each method the range of bytes that its calls take in the capture."""
    import _libqdp

    exported = ctypes.PyDLL(_libqdp.__file__)
    ranges = {}
    start = os.path.getsize(capture)
    for name, recipe in {"LibraryInit": None, **RECIPES}.items():
        if name == "LibraryInit":
            exported.LibraryInit()
        else:
            getattr(_libqdp, name)(*is_made_of(recipe, _libqdp))
        end = os.path.getsize(capture)
        ranges[name] = start, end
        start = end
    print(json.dumps(ranges))


def places(value, path=()):
    """The paths of all values in a line."""
    yield path
    if isinstance(value, (dict, list)):
        for key, item in value.items() if isinstance(value, dict) else enumerate(value):
            yield from places(item, path + (key,))


def damaged(line, chance):
    """A line with one value replaced, removed, doubled or cut, or with one byte changed."""
    if chance.random() < 0.2:
        text = bytearray(line)
        text[chance.randrange(len(text) - 1)] = chance.randrange(256)
        return bytes(text)
    call = json.loads(line.decode())
    path = chance.choice([path for path in places(call) if path])
    owner = call
    for key in path[:-1]:
        owner = owner[key]
    key, way = path[-1], chance.random()
    if way < 0.2:
        del owner[key]
    elif way < 0.3 and isinstance(owner, list):
        owner.append(owner[key])
    elif way < 0.6 and isinstance(owner[key], str):
        owner[key] = owner[key][: chance.randrange(len(owner[key]) + 1) // 2 * 2]
    elif way < 0.7 and isinstance(owner[key], int):
        owner[key] = max(0, owner[key] + chance.choice([-1, 1, 8, 1 << 20]))
    else:
        owner[key] = chance.choice(STRANGE)
    return json.dumps(call).encode() + b"\n"


def replay(capture, methods, seeds):
    from qdp_host import EmbeddedHost, HostError

    host = EmbeddedHost()
    import _libqdp

    exported = ctypes.PyDLL(_libqdp.__file__)
    with open(capture, "rb") as file:
        content = file.read()
    header = content[: content.index(b"\n") + 1]
    ranges = json.loads(open(methods).read())
    # The header comes with the first call, which is one of LibraryInit's.
    init = content[len(header) : ranges.pop("LibraryInit")[1]].splitlines(True)
    signal.signal(signal.SIGALRM, signal.default_int_handler)
    refused = answered = 0
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "capture")
        for seed in seeds:
            chance = random.Random(seed)
            name = chance.choice(sorted(ranges))
            lines = init + content[slice(*ranges[name])].splitlines(True)
            number = chance.randrange(len(lines))
            lines[number] = damaged(lines[number], chance)
            with open(path, "wb") as file:
                file.write(header + b"".join(lines))
            print("seed", seed, name, file=sys.stderr, flush=True)
            try:
                host.replay(path)
            except HostError:
                refused += 1
                continue
            answered += 1
            # A damaged answer may say for ever that more follows; the dump that believes it ends by a signal, as by
            # Ctrl-C.
            signal.alarm(ENDLESS_SECONDS)
            try:
                exported.LibraryInit()
                getattr(_libqdp, name)(*is_made_of(RECIPES[name], _libqdp))
            except (Exception, KeyboardInterrupt) as error:
                print(repr(error), file=sys.stderr)
            finally:
                signal.alarm(0)
    print(json.dumps({"refused": refused, "answered": answered}))


if sys.argv[1] == "record":
    record(os.environ["QDP_HOST_CAPTURE"])
else:
    replay(sys.argv[2], sys.argv[3], range(int(sys.argv[4]), int(sys.argv[5])))
