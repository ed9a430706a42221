"""Results that cannot be built, because the interpreter's memory ends at each of its allocations in turn."""

import pytest

import _libqdp
from observe import standard_error

testcapi = pytest.importorskip("_testcapi")

# Beyond the last allocation of the longest result here.
ALLOCATIONS = 120

NO_BUFFER = (SystemError, "Failed to allocate buffer.\n")


def failures(method, arguments):
    """Every way in which the method fails: as a cause beside a result, or raised."""
    seen = set()
    for position in range(ALLOCATIONS):
        testcapi.set_nomemory(position, position + 1)
        try:
            method(*arguments)
            failure = None
        except (MemoryError, SystemError) as error:
            failure = error
        finally:
            testcapi.remove_mem_hooks()
        if failure is not None:
            beside = failure.__cause__
            seen.add(("left set", type(beside), str(beside)) if beside else ("raised", type(failure), str(failure)))
    return seen


@pytest.mark.parametrize(
    "name, arguments",
    [
        ("GetFPOEnabled", ("dvs-production",)),
        ("GetFPOUplinkStatus", (0, 1)),
        ("GetFPOUplinkStats", (0, 1)),
        ("GetFPORevalConfig", ()),
        ("GetFPODelayCtOlConfig", ()),
    ],
)
def test_a_dict_that_the_interpreter_cannot_build(configured, name, arguments):
    configured.freeze()
    configured.advance(1e9)  # so that counters are numbers which need memory
    with standard_error() as error:
        assert failures(getattr(_libqdp, name), arguments) == {("raised", MemoryError, "")}
    assert error.text == ""


def test_lcores_that_cannot_be_listed(configured):
    configured.freeze()
    configured.advance(1e9)
    with standard_error() as error:
        assert failures(_libqdp.GetFPOStats, (0, (1, 2))) == {
            ("left set", MemoryError, ""),
            ("left set", *NO_BUFFER),
        }
    assert set(error.text.splitlines(keepends=True)) == {"Failed to allocate memory.\n"}  # for the list itself
