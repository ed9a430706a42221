"""What flow offload does on a switch without a property of its own, by the host's kernel."""

import os
import subprocess

import pytest


@pytest.mark.parametrize(
    "first, second, order",
    [
        ("7.0.0", "7.0.0", 0),
        ("7.0.0", "7.0.1", -1),
        ("7.0.1", "7.0.0", 1),
        # Numbers are numbers, not texts.
        ("7.0.10", "7.0.9", 1),
        ("10.0.0", "9.9.9", 1),
        ("7.00.03", "7.0.3", 0),
        # The first number decides, then the second, then the third.
        ("6.9.9", "7.0.0", -1),
        ("8.0.0", "7.9.9", 1),
        ("7.1.0", "7.0.9", 1),
        ("7.0.9", "7.1.0", -1),
        # What is not there is 0.
        ("7.0", "7.0.0", 0),
        ("7", "7.0.0", 0),
        ("7.", "7.0.0", 0),
        ("", "0.0.0", 0),
        ("garbage", "0.0.0", 0),
        ("v7.0.3", "0.0.0", 0),
        (".7.0", "0.0.0", 0),
        # After a number that cannot be read, none is read.
        ("7.x.5", "7.0.0", 0),
        ("7..5", "7.0.0", 0),
        ("7-0-3", "7.0.0", 0),
        # What follows the third number does not count.
        ("7.0.3-5-amd64", "7.0.3", 0),
        ("7.0.3.9", "7.0.3", 0),
        ("7.0.3rc1", "7.0.3", 0),
        # Blanks and a sign may lead a number.
        ("  7. 0.\t3", "7.0.3", 0),
        ("+7.0.3", "7.0.3", 0),
        ("7 .0.3", "7.0.0", 0),
        ("-1.0.0", "4294967295.0.0", 0),
        # Each keeps 32 bits, and the largest are unsigned.
        ("4294967295.0.0", "7.0.0", 1),
        ("2147483648.0.0", "2147483647.0.0", 1),
        ("4294967303.0.3", "7.0.3", 0),
    ],
)
def test_releases_are_compared_by_three_numbers(core, first, second, order):
    assert core.compared_releases(first, second) == order
    assert core.compared_releases(second, first) == -order


@pytest.mark.parametrize(
    "release, models",
    [
        (None, 1),
        ("", 1),
        ("garbage", 1),
        ("6.7.0", 1),
        ("6.99.99", 1),
        ("7", 7),
        ("7.0", 7),
        ("7.0.0", 7),
        ("7.0.2", 7),
        ("7.0.2-9", 7),
        ("7.0.3", 23),
        ("7.0.3-5-amd64", 23),
        ("7.0.10", 23),
        ("7.1.0", 23),
        ("8.0.0", 23),
        ("10.0.0", 23),
    ],
)
def test_models_by_release(core, release, models):
    assert core.fpo_models(release) == models


SCRIPT = """
import ctypes, sys
sys.path[:0] = sys.argv[1:3]
from qdp_host import EmbeddedHost
host = EmbeddedHost(sys.argv[1] + "/host")
import _libqdp
assert ctypes.PyDLL(_libqdp.__file__).LibraryInit() == 0
print(_libqdp.GetFPOEnabled("dvs-production"))
assert _libqdp.EnableFPO("dvs-production", {}) is True
print(_libqdp.GetFPOEnabled("dvs-production"))
"""


@pytest.mark.parametrize(
    "release, models", [("6.7.0", 1), ("7.0.2", 7), ("7.0.3", 23), ("7.0", 7), ("7.0.3-5-amd64", 23), (None, 1)]
)
def test_a_process_on_that_kernel(build, root, release, models):
    """The whole way, in a process whose system reports another release, or none at all."""
    environment = {name: value for name, value in os.environ.items() if name != "CHOSEN_RELEASE"}
    preloaded = [environment.get("LD_PRELOAD"), str(build / "tests" / "libchosen_release.so")]
    environment["LD_PRELOAD"] = " ".join(filter(None, preloaded))
    if release is not None:
        environment["CHOSEN_RELEASE"] = release
    done = subprocess.run(
        ["/usr/bin/python3", "-c", SCRIPT, str(build), str(root / "host" / "python")],
        capture_output=True,
        text=True,
        timeout=120,
        env=environment,
    )
    settings = {
        "enabled": 1,
        "geneveCritical": 0,
        "ipDiscoveryDHCP": 1,
        "ipDiscoveryICMP6ND": 0,
        "models": models,
    }
    assert (done.returncode, done.stderr) == (0, "")
    # First the default itself, then the same after an empty change has written it.
    assert done.stdout == f"{settings}\n" * 2
