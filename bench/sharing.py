"""Measures what a call costs over the socket of a shared host, beside the same call within the process, checks it
against its bound, and adds it to docs/performance.md: BUILD.

With `calls` behind BUILD, it is the process that calls.
"""

import json
import os
import pathlib
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROUNDS = 500
CALLS = 20
MOST = 30  # microseconds of a call of the platform, on top of one within the process

# What is called, and in words.
METHODS = {
    "GetFlowTimeout": ((), "`GetFlowTimeout`, a word"),
    "GetPortStats": ((0, 5), "`GetPortStats`, a record each"),
    "ListPorts": ((0,), "`ListPorts`, 36 ports"),
}
HEAD = "## What a shared host adds"
SAID = """
`qdp-host serve` answers the calls of other processes at a socket. These are the least times of a method, in the best of
many rounds, within the process and over the socket, and what each of its calls of the platform takes on top.

"""


def measure_calls():
    """The least microseconds of one call of each method."""
    import _libqdp

    found = {}
    for name, (arguments, _) in METHODS.items():
        method = getattr(_libqdp, name)
        times = []
        for _ in range(ROUNDS):
            begin = time.perf_counter_ns()
            for _ in range(CALLS):
                method(*arguments)
            times.append((time.perf_counter_ns() - begin) / CALLS / 1e3)
        found[name] = min(times)
    return found


def measured(build):
    """(within the process, over the socket, number of calls of the platform) of each method."""
    sys.path.insert(0, str(ROOT / "host" / "python"))
    os.environ["QDP_HOST_LIBRARIES"] = str(build / "host")
    import qdp_host

    with qdp_host.serving() as host:
        both = []
        for is_shared in (False, True):
            environment = host.environment("/usr/bin/python3")
            if not is_shared:
                del environment[qdp_host.VARIABLE]
            command = ["/usr/bin/python3", __file__, str(build), "calls"]
            run = subprocess.run(command, env=environment, stdout=subprocess.PIPE, check=True)
            both.append(json.loads(run.stdout))
        calls = {}
        for name, (arguments, _) in METHODS.items():
            with host.recording() as recorded:
                code = f"import _libqdp; _libqdp.{name}(*{arguments})"
                subprocess.run(["/usr/bin/python3", "-c", code], env=environment, check=True)
            calls[name] = len(recorded)
    return {name: (both[0][name], both[1][name], calls[name]) for name in METHODS}


def on_top(own, shared, calls):
    return (shared - own) / calls


def table(found):
    lines = [
        "| method | within the process | over the socket | calls | a call on top | at most |",
        "|---|---|---|---|---|---|",
    ]
    for name, (own, shared, calls) in found.items():
        top = on_top(own, shared, calls)
        lines.append(
            f"| {METHODS[name][1]} | {own:.2f} µs | {shared:.1f} µs | {calls} | {top:.1f} µs | {MOST} µs |"
        )
    return "\n".join(lines) + "\n"


def faults(found):
    return [f"a call of {name} takes {on_top(*times):.1f} µs more over the socket, more than {MOST}"
            for name, times in found.items() if on_top(*times) > MOST]


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    if sys.argv[2:]:
        print(json.dumps(measure_calls()))
        return
    found = measured(build)
    print(table(found), end="")
    page = ROOT / "docs" / "performance.md"
    text = page.read_text().partition(HEAD)[0].rstrip("\n")
    page.write_text(f"{text}\n\n{HEAD}\n{SAID}{table(found)}")
    sys.exit("\n".join(faults(found)) or 0)


if __name__ == "__main__":
    main()
