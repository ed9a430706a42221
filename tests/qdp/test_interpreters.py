"""The layer on every interpreter of this machine that it is for: the same script prints the same."""

import os
import pathlib
import subprocess

import pytest

from interpreters import interpreters

SCRIPT = pathlib.Path(__file__).with_name("with_any_interpreter.py")

EXPECTED = """\
<Switch 0: portset-0, 36 ports> [0, 1] dvs-smartnic
Change(before=32, after=64, path='dvs-production/burst-size', verified=True) 64
266
35 0
[(10, 77, 'flow-timeout', True), (True, False, 'dvs-production/lro', True)] 77
10 True
InvalidArgument burst-size is 0 to 4294967295, not -1
NotFound no switch no-such-switch
NotFound a host has no setting 'latency-histogramm'
Unsupported P4UKLatencySet(): latency-histogram cannot be verified: the platform has no method that reads it
101 ['flow_info', 'ct_state', 'ipfix', 'flow_rewrite', 'tunnel_rewrite', 'output', 'uplink_map', 'ct_state', 'ipfix']
[100]
[79, 79]
<Reading of 1 counters> ['Host', 'Plan', 'rates', 'settings']
"""


@pytest.mark.parametrize("interpreter", interpreters())
def test_same_on_every_interpreter(build, interpreter):
    environment = {**os.environ, "LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": str(build)}
    done = subprocess.run(
        [interpreter, "-W", "error", str(SCRIPT)], env=environment, capture_output=True, text=True, timeout=120
    )
    assert (done.stdout, done.stderr) == (EXPECTED, "")
