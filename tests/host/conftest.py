"""What tests of the embedded host share: its scenarios."""

import ctypes
import os
import subprocess

import pytest


class Control:
    """The functions of the embedded host that load and write scenarios."""

    def __init__(self, library):
        self._library = library
        for name in ("error", "scenario"):
            getattr(library, "qdp_host_" + name).restype = ctypes.c_char_p
        library.qdp_host_load.argtypes = [ctypes.c_char_p]

    def load(self, path=None):
        return self._library.qdp_host_load(path and os.fsencode(path))

    def error(self):
        message = self._library.qdp_host_error()
        return message and message.decode()

    def scenario(self):
        return self._library.qdp_host_scenario().decode()


@pytest.fixture
def control(host, build):
    """The control functions; the default scenario is put back at the end."""
    made = Control(ctypes.PyDLL(str(build / "host" / "libqdphost.so")))
    yield made
    assert made.load() == 0
    host.reset()


@pytest.fixture(scope="session")
def schema_text(build):
    """The schema of scenarios as the build's descriptions make it."""
    return subprocess.run([build / "host" / "scenario_schema"], stdout=subprocess.PIPE, check=True, text=True).stdout


@pytest.fixture
def scenarios(root):
    """The folder of the scenarios that ship."""
    return root / "host" / "scenarios"
