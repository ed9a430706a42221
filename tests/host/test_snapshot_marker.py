"""Test of the pytest marker that lets a snapshot answer."""

import os
import subprocess
import sys

from exporting import environment_of

TEST = '''
import pytest

@pytest.mark.snapshot({path!r})
def test_answers(qdp_host):
    import _libqdp

    assert [switch["name"] for switch in _libqdp.ListSwitches()] == ["portset-0", "dvs-storage", "switch-smartnic"]
    assert _libqdp.GetPortStats(0, 3) == {counters!r}
'''


def test_snapshot_answers_in_a_test(build, root, tmp_path):
    environment = environment_of(build, root)
    path = str(tmp_path / "host.qdp")
    program = (
        "from qdp.snapshot import write, read; write.write({0!r}); "
        "print(read.Snapshot({0!r}).call('GetPortStats', (0, 3)))"
    )
    counters = subprocess.run(
        [sys.executable, "-c", program.format(path)], env=environment, cwd="/", stdout=subprocess.PIPE, check=True
    ).stdout.decode()
    (tmp_path / "test_it.py").write_text(TEST.format(path=path, counters=eval(counters)))  # a dict of numbers
    environment.pop("LD_LIBRARY_PATH")
    done = subprocess.run(
        [sys.executable, "-m", "pytest", "-q", "-p", "qdp_host.pytest_plugin", "test_it.py"],
        env=dict(environment, QDP_HOST_LIBRARIES=str(build / "host")),
        cwd=str(tmp_path),
        stdout=subprocess.PIPE,
        universal_newlines=True,
    )
    assert done.returncode == 0, done.stdout
