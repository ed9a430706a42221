"""The recorder and the stand-ins load wherever the module does: on an old glibc, without a C++ runtime."""

import platform
import re
import subprocess

import pytest

LIBRARIES = ["libqdpcapture.so", "libqdphost.so", "libqdp.so", "libqmtPublic.so"]
OLDEST = (2, 14) if platform.machine() == "x86_64" else (2, 17)


@pytest.fixture(autouse=True)
def released(build):
    if build.name in ("sanitize", "coverage"):
        pytest.skip("this build needs its compiler's runtime")


def objdump(build, library, option):
    path = build / "host" / library
    return subprocess.run(["objdump", option, path], stdout=subprocess.PIPE, text=True, check=True).stdout


@pytest.mark.parametrize("library", LIBRARIES)
def test_no_symbol_needs_a_newer_glibc(build, library):
    needed = re.findall(r"\(?GLIBC_([\d.]+)\)? +(\S+)$", objdump(build, library, "-T"), re.MULTILINE)
    assert needed
    newer = [(version, name) for version, name in needed if tuple(map(int, version.split(".")))[:2] > OLDEST]
    assert newer == []


@pytest.mark.parametrize("library", LIBRARIES)
def test_no_cpp_runtime_is_needed(build, library):
    needed = re.findall(r"NEEDED +(\S+)", objdump(build, library, "-p"))
    assert "libc.so.6" in needed or library == "libqdp.so"
    assert [name for name in needed if name.startswith(("libstdc++", "libgcc"))] == []


@pytest.mark.parametrize("library", LIBRARIES)
def test_no_function_of_the_runtime_is_exported(build, library):
    """Neither the static runtime's nor those that the host's own sources make of its templates."""
    command = ["nm", "-D", "--defined-only", "--format=just-symbols", build / "host" / library]
    exported = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout.split()
    assert exported
    assert [name for name in exported if not name.startswith(("Qdp_", "DVS", "qdp_host_", "_ZN4host"))] == []
