"""For pytest: the fixture `qdp_host`, the embedded host of a test, and the marker `scenario` that chooses what it has."""

import sys

import pytest

from . import _host


class _BeforeTheModule:
    """Loads the stand-ins when the module is first imported, which may be at the top of a test file."""

    @staticmethod
    def find_spec(name, path=None, target=None):
        if name == "_libqdp":
            _host.the_host()
        # Others find it.


def pytest_configure(config):
    config.addinivalue_line("markers", "scenario(name): the scenario, by file or by name, that the fixture qdp_host has")
    sys.meta_path.insert(0, _BeforeTheModule)


def pytest_unconfigure(config):
    sys.meta_path.remove(_BeforeTheModule)


@pytest.fixture
def qdp_host(request):
    """The embedded host, fresh for each test; `@pytest.mark.scenario("mux")` chooses a scenario."""
    marker = request.node.get_closest_marker("scenario")
    with _host.running(*(marker.args if marker else ()), **(marker.kwargs if marker else {})) as host:
        yield host
