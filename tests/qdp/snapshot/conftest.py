"""Snapshots for tests: written by reading processes on the embedded host of the build."""

import os

import pytest
from exporting import environment_of

from qdp.snapshot import write


@pytest.fixture(scope="session")
def reading_environment(build, root):
    return environment_of(build, root)


@pytest.fixture
def on_embedded_host(reading_environment, monkeypatch):
    """Reading processes of the test find the embedded host."""
    for name in ("LD_LIBRARY_PATH", "PYTHONPATH"):
        monkeypatch.setenv(name, reading_environment[name])


@pytest.fixture(scope="session")
def written(reading_environment, tmp_path_factory):
    """The path of a bundle of two readings of the default host, which no test changes."""
    path = str(tmp_path_factory.mktemp("snapshot") / "written.qdp")
    kept = {name: os.environ.get(name) for name in ("LD_LIBRARY_PATH", "PYTHONPATH")}
    os.environ.update({name: reading_environment[name] for name in kept})
    try:
        write.write(path, write.Options(readings=2, interval=1.0))
    finally:
        for name, value in kept.items():
            os.environ.pop(name) if value is None else os.environ.update({name: value})
    return path
