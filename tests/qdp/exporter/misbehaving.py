"""An exporter whose reading process has an embedded host that fails and hangs as a file says, read before each sweep.

The file, named by MISBEHAVIOUR, holds JSON: {"fail": [operations], "delay": {operation: seconds}, "exit": true,
"grow": {method: {key: growth a second}}, "set": {method: {key: value}}, "collect": true where all collections are on}.
"""

import json
import os
import sys
import time

FILE = os.environ["MISBEHAVIOUR"]


def reader(arguments):
    """The reading process, on the host of this process."""
    import qdp_host

    host = qdp_host.EmbeddedHost()
    from qdp.exporter import collect
    from qdp.exporter import reader as real

    start, call = time.monotonic(), collect.qdp.call_raw

    def misbehave(sweep, read=collect.Sweep.read):
        with open(FILE) as file:
            wanted = json.load(file)
        if wanted.get("exit"):
            os._exit(3)
        if wanted.get("collect"):
            call("P4UKLatencySet", 1)
            call("AdvStatsSetEnabled", 0, 1)
        for operation in host.operations():
            host.fail(operation, times=0) if operation in wanted.get("fail", []) else host.fail(operation, nth=1 << 30)
            seconds = wanted.get("delay", {}).get(operation)
            host.delay(operation, seconds, times=0) if seconds else host.delay(operation, 0, nth=1 << 30)
        return read(sweep)

    def changed(method, *arguments):
        """The answer of a method with what the file changes of it."""
        answer = call(method, *arguments)
        with open(FILE) as file:
            wanted = json.load(file)
        for key, rate in wanted.get("grow", {}).get(method, {}).items():
            for each in answer if isinstance(answer, list) else [answer]:
                each[key] += int(rate * (time.monotonic() - start))
        answer_keys = wanted.get("set", {}).get(method, {})
        return dict(answer, **answer_keys) if answer_keys else answer

    collect.qdp.call_raw = changed
    collect.Sweep.read = misbehave
    real.main(*arguments)


def exporter(arguments):
    from qdp.cli.main import main
    from qdp.exporter import source

    usual = source.command_of
    source.command_of = lambda options: [sys.executable, __file__, "reader"] + usual(options)[3:]
    sys.exit(main(["exporter"] + arguments))


if __name__ == "__main__":
    if sys.argv[1] == "reader":
        reader(sys.argv[2:])
    else:
        exporter(sys.argv[1:])
