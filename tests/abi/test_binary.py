"""The built file: what it needs, what it shows, and what it may call."""

import platform
import re
import subprocess

import pytest

EXPORTED = """
    PyInit__libqdp LibraryInit Warning Panic Log DVSLoadConfig DVSAliasToSwitchId DVSAliasToSwitchIdAllTypes
    DVSAliasToPortsetName DVSPortsetNameToAlias DVPortExist MACToStr FlagsToStr FCFlowKeyToStr FCActionGroupToStr
    FCActionsToStr PyQDP_CreatePortList PyQDP_CreateVlanList PyQDP_PortNetQInfo PyQDPSetFiltTypeProp
    QdpGetIndexTableData QdpGetGenericKeyTableData
""".split()

# What the module may call of the interpreter: all are in the stable interface of 3.6.
STABLE_3_6 = """
    PyArg_ParseTuple Py_BuildValue PyBool_FromLong
    PyDict_GetItemString PyDict_Merge PyDict_New PyDict_Next PyDict_SetItem PyDict_SetItemString
    PyErr_CheckSignals PyErr_Clear PyErr_ExceptionMatches PyErr_NoMemory PyErr_Occurred PyErr_SetString
    PyExc_MemoryError PyExc_OSError PyExc_SystemError PyExc_ValueError
    PyList_Append PyList_New PyList_SetItem PyList_Size
    PyLong_AsLong PyLong_FromLong PyLong_FromUnsignedLong PyModule_Create2
    PyTuple_GetItem PyTuple_New PyTuple_SetItem PyTuple_Size
    PyType_GetFlags PyType_IsSubtype
    PyUnicode_CompareWithASCIIString PyUnicode_FromString PyUnicode_FromStringAndSize PyUnicode_Type
    _Py_Dealloc _Py_FalseStruct _Py_NoneStruct _Py_TrueStruct
""".split()

MOST_BYTES = 192 * 1024  # of the stripped file

# The linker's own, which may be absent.
OPTIONAL = {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__gmon_start__", "__cxa_finalize"}


@pytest.fixture(scope="module")
def binary(build):
    return build / "_libqdp.abi3.so"


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def dynamic(binary, tag):
    return re.findall(rf"\({tag}\).*\[(.*)\]", run("readelf", "-dW", str(binary)))


def symbols(binary, *options):
    return [line.split()[-1] for line in run("nm", "-D", *options, str(binary)).splitlines()]


def test_needs_the_platform_libraries_and_libc_only(binary):
    assert dynamic(binary, "NEEDED") == ["libqdp.so", "libqmtPublic.so", "libc.so.6"]


def test_is_small(binary, tmp_path):
    stripped = tmp_path / "stripped.so"
    run("strip", "-o", str(stripped), str(binary))
    assert stripped.stat().st_size <= MOST_BYTES


def test_has_no_search_path_of_its_own(binary):
    assert dynamic(binary, "RPATH") == dynamic(binary, "RUNPATH") == []


def test_shows_the_documented_functions_and_nothing_else(binary):
    assert sorted(symbols(binary, "--defined-only")) == sorted(EXPORTED)


def test_calls_the_interpreter_through_the_stable_interface_of_3_6(binary):
    python = [name for name in symbols(binary, "--undefined-only") if name.startswith(("Py", "_Py"))]
    assert [name for name in python if name not in STABLE_3_6] == []


def test_calls_nothing_of_libc_that_is_newer_than_2_17(binary):
    versions = [name.split("@GLIBC_")[1] for name in symbols(binary, "--undefined-only") if "@GLIBC_" in name]
    assert versions
    assert [each for each in versions if tuple(map(int, each.split("."))) > (2, 17)] == []


def test_everything_else_that_it_calls_is_the_platforms(binary, root):
    headers = "".join(path.read_text() for path in (root / "src" / "platform").glob("*.h"))
    declared = set(re.findall(r"\b((?:Qdp_|DVS)\w+)\(", headers))
    called = [
        name
        for name in symbols(binary, "--undefined-only")
        if "@" not in name and not name.startswith(("Py", "_Py")) and name not in OPTIONAL
    ]
    assert called and [name for name in called if name not in declared] == []


STAND_INS = [f"host/lib{name}.so" for name in ("qdp", "qdpcapture", "qdphost", "qmtPublic")]
HARDENED = ["_libqdp.abi3.so", "qdp/_call.abi3.so", *STAND_INS]


@pytest.mark.parametrize("file", HARDENED)
class TestHardening:
    """Each file is built with the protections that distributions build with."""

    @pytest.fixture
    def segments(self, build, file):
        """The kinds of the file's segments, with their flags."""
        listed = run("readelf", "-lW", str(build / file))
        found = re.findall(r"^  (\w+) +(?:0x\w+ +){5}([RWE ]{3}) ", listed, re.MULTILINE)
        assert {kind for kind, _ in found} >= {"LOAD", "DYNAMIC"}
        return found

    def test_symbols_are_bound_before_the_first_call_and_read_only_from_then_on(self, build, file, segments):
        flags = re.findall(r"\((?:FLAGS|FLAGS_1)\) +(.*)", run("readelf", "-dW", str(build / file)))
        assert "NOW" in " ".join(flags)
        assert ("GNU_RELRO", "R  ") in segments

    def test_nothing_is_writable_and_executable(self, segments):
        assert [flags for _, flags in segments if "W" in flags and "E" in flags] == []
        assert ("GNU_STACK", "RW ") in segments

    def test_code_has_a_mapping_of_its_own(self, segments):
        loaded = [flags for kind, flags in segments if kind == "LOAD"]
        assert loaded.count("R E") == 1 and loaded[0] == "R  "

    def test_stacks_are_guarded(self, build, file):
        assert "__stack_chk_fail" in run("nm", "-D", "--undefined-only", str(build / file))

    def test_functions_are_marked_as_targets_of_indirect_branches(self, build, file):
        if platform.machine() != "x86_64":
            pytest.skip("only x86 marks them with an instruction")
        defined = run("nm", "-D", "--defined-only", str(build / file))
        starts = {int(place, 16) for place in re.findall(r"^(\w+) T ", defined, re.MULTILINE)}
        code = run("objdump", "-d", "--no-show-raw-insn", str(build / file))
        marked = {int(place, 16) for place in re.findall(r"^ *([0-9a-f]+):\s+endbr64", code, re.MULTILINE)}
        assert starts and starts - marked == set()


def test_large_frames_are_probed_page_by_page(binary):
    """Some methods have records of more than a page on their stack."""
    assert re.search(r"\tor[bwlq]? +\$0x0,(?:0x\w+)?\(%rsp\)", run("objdump", "-d", "--no-show-raw-insn", str(binary)))


@pytest.mark.parametrize("file", ["_libqdp.abi3.so", "host/libqdpcapture.so", "host/libqdphost.so"])
def test_copies_and_formats_are_checked(build, file):
    called = symbols(build / file, "--undefined-only")
    assert [name for name in called if re.match(r"__\w+_chk@", name)]
    if file == "_libqdp.abi3.so":  # the others hold parts of the C++ runtime, which are built as they are
        assert [name for name in called if re.match(r"v?(?:f|s)?printf@|strcpy@|strcat@", name)] == []


@pytest.mark.parametrize("library", ["libqdp.so", "libqdpcapture.so", "libqdphost.so", "libqmtPublic.so"])
def test_the_stand_ins_need_no_cxx_runtime(build, library):
    needed = set(dynamic(build / "host" / library, "NEEDED"))
    linkers = {"ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"}
    libc = {"libc.so.6", "libm.so.6", "libpthread.so.0", "libdl.so.2", "librt.so.1"}  # which older ones keep apart
    assert needed <= {"libqdphost.so"} | libc | linkers


@pytest.mark.parametrize("library", ["libqdp.so", "libqmtPublic.so"])
def test_the_stand_ins_carry_the_names_of_the_real_libraries(build, library):
    assert dynamic(build / "host" / library, "SONAME") == [library]
