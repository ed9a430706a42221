"""The wheel: what is in it, and that it works in a fresh virtual environment of every interpreter of this machine."""

import os
import pathlib
import platform
import re
import zipfile

import pytest

from interpreters import interpreters
from package.shared import ansible_modules, command_documents, examples, host_files, layer_files, output, ran, scenarios

(WHEEL,) = pathlib.Path(os.environ["QDP_PACKAGES"]).glob("*.whl")


def can_make_environments(interpreter):
    return ran(interpreter, "-c", "import ensurepip, venv").returncode == 0


OLD_PIP = "pip==21.3.1"  # the last one of CPython 3.6


class Environment:
    """A fresh virtual environment with the wheel in it."""

    def __init__(self, folder, interpreter, variables, *options):
        self.variables = variables
        self.folder = folder
        output(interpreter, "-m", "venv", *options, folder, env=variables)
        if ran(interpreter, "-c", "import sys; sys.exit(sys.version_info < (3, 7))").returncode:
            self.run("python", "-m", "pip", "install", "-q", OLD_PIP)  # its own does not know the wheel's tag
        self.run("python", "-m", "pip", "install", "-q", "--no-index", "--no-deps", WHEEL)

    def run(self, command, *arguments):
        return output(self.folder / "bin" / command, *arguments, env=self.variables, cwd=self.folder)

    def packages(self):
        """The folder that the wheel was installed to."""
        return pathlib.Path(self.run("python", "-c", "import sysconfig; print(sysconfig.get_path('platlib'))").strip())


@pytest.fixture(scope="module", params=filter(can_make_environments, interpreters()))
def environment(request, bare, tmp_path_factory):
    return Environment(tmp_path_factory.mktemp("environment") / "venv", request.param, bare)


@pytest.fixture(scope="module")
def with_debians_packages(bare, tmp_path_factory):
    """An environment of the system's Python that sees Debian's packages as well: pytest."""
    folder = tmp_path_factory.mktemp("environment") / "venv"
    return Environment(folder, "/usr/bin/python3", bare, "--system-site-packages")


class TestContents:
    @pytest.fixture(scope="class")
    def names(self):
        with zipfile.ZipFile(WHEEL) as wheel:
            return [name for name in wheel.namelist() if ".dist-info/" not in name and not name.endswith("/")]

    @pytest.fixture(scope="class")
    def metadata(self):
        with zipfile.ZipFile(WHEEL) as wheel:
            (name,) = [name for name in wheel.namelist() if name.endswith(".dist-info/METADATA")]
            return wheel.read(name).decode()

    def test_tag(self):
        """As auditwheel gives it: by the newest symbol of the C library that any file needs."""
        assert re.search(rf"-cp36-abi3-(manylinux\w*\.)*manylinux_2_(\d+)_{platform.machine()}\.whl$", WHEEL.name)

    def test_files(self, names, root):
        stubs = [f"_libqdp-stubs/{name}" for name in ("__init__.pyi", "py.typed")]
        host = [f"qdp_host/{name}" for name in host_files(root)]
        layer = [f"qdp/{name}" for name in layer_files(root)]
        shared = {f"doc/qdp-host/{name}" for name in examples(root)} | {"doc/python3-libqdp/CHANGELOG.md"}
        shared |= command_documents("qdp") | command_documents("qdp-host") | ansible_modules(root)
        (data,) = {name.split("/")[0] for name in names if ".data/" in name}
        documents = [f"{data}/data/share/{name}" for name in shared]
        assert sorted(names) == sorted(["_libqdp.abi3.so", *stubs, *host, *layer, *documents])

    def test_metadata_leads_nowhere_inside_the_repository(self, metadata):
        assert "\nAuthor-Email: the libqdp developers <" in metadata
        links = re.findall(r"\]\(([^)]*)\)", metadata)
        assert [link for link in links if not link.startswith("https://")] == []

    def test_the_files_are_those_of_the_build(self, build, tmp_path):
        """Built once: the wheel's module is the build's, without what stripping leaves out."""
        stripped = tmp_path / "stripped.so"
        output("strip", "-o", stripped, build / "_libqdp.abi3.so")
        with zipfile.ZipFile(WHEEL) as wheel:
            assert wheel.read("_libqdp.abi3.so") == stripped.read_bytes()

    def test_the_module_finds_its_libraries_by_name_alone(self, tmp_path):
        with zipfile.ZipFile(WHEEL) as wheel:
            module = wheel.extract("_libqdp.abi3.so", tmp_path)
        said = output("readelf", "--dynamic", module)
        needed = re.findall(r"\(NEEDED\).*\[(.*)\]", said)
        assert sorted(needed) == ["libc.so.6", "libqdp.so", "libqmtPublic.so"]
        assert "RPATH" not in said and "RUNPATH" not in said


class TestInEveryInterpreter:
    def test_the_stand_ins_are_not_found_unasked(self, environment):
        done = ran(environment.folder / "bin" / "python", "-c", "import _libqdp", env=environment.variables)
        assert done.returncode == 1
        assert "ImportError: libqdp.so: cannot open shared object file" in done.stderr

    def test_an_example_runs(self, environment, root):
        blocks = environment.run("qdp-host", "run", root / "examples" / "inventory.py").split("\n\n")
        assert [block.splitlines()[0] for block in blocks] == [
            "Switches",
            "Ports of switch 0, portset-0",
            "Ports of switch 1, dvs-storage",
            "Ports of switch 2, switch-smartnic",
        ]

    def test_the_installed_module_runs(self, environment, tmp_path):
        script = tmp_path / "script.py"
        script.write_text(
            "import inspect, sys, _libqdp\n"
            "methods = [each for each in vars(_libqdp).values() if inspect.isbuiltin(each)]\n"
            "print(_libqdp.__file__, sys.prefix, len(methods))\n"
        )
        file, prefix, methods = environment.run("qdp-host", "run", script).split()
        assert file == str(environment.packages() / "_libqdp.abi3.so")
        assert prefix == str(environment.folder)
        assert methods == "147"

    def test_the_layers_command_runs(self, environment):
        said = environment.run("qdp-host", "run", environment.folder / "bin" / "qdp", "switch", "show")
        assert "portset-0" in said and "dvs-storage" in said

    def test_scenarios_come_along(self, environment, root):
        for name in scenarios(root):
            assert environment.run("qdp-host", "check", name) == f"{name}: ok\n"
        said = environment.run("qdp-host", "run", "--scenario", "mux", root / "examples" / "inventory.py")
        assert "dvs-mux" in said and "portset-0" not in said
        assert "  behind the uplinks of switch 0\n" in environment.run("qdp-host", "show", "mux")

    def test_a_capture_is_replayed(self, environment, root, tmp_path):
        capture, example = tmp_path / "captured", root / "examples" / "top_flows.py"
        recorded = environment.run("qdp-host", "run", "--scenario", "mux", "--capture", capture, example)
        assert '"Qdp_Dump_Flow_Table"' in capture.read_text()
        replayed = environment.run("qdp-host", "run", "--replay", capture, example)
        assert replayed == recorded != environment.run("qdp-host", "run", example)


class TestWithDebiansPackages:
    def test_pytest_finds_the_plugin(self, with_debians_packages, tmp_path):
        (tmp_path / "test_script.py").write_text(
            "import _libqdp\n\n\n"
            "def test_script(qdp_host):\n"
            "    qdp_host.fail('Qdp_Get_Port_List')\n"
            "    assert _libqdp.ListPorts(0) is None and len(_libqdp.ListPorts(0)) == 36\n"
        )
        said = with_debians_packages.run("python", "-m", "pytest", "-q", "-p", "no:cacheprovider", tmp_path)
        assert re.search(r"^1 passed in", said, re.MULTILINE)

    def test_a_type_checker_finds_the_stubs(self, with_debians_packages, tmp_path):
        script = tmp_path / "script.py"
        script.write_text("import _libqdp\nreveal_type(_libqdp.GetFlowTimeout())\n_libqdp.ListPorts('one')\n")
        python = with_debians_packages.folder / "bin" / "python"
        options = ["--python-executable", python, "--cache-dir", tmp_path]
        done = ran("/usr/bin/mypy", *options, script, env=with_debians_packages.variables)
        assert 'Revealed type is "Union[builtins.int, None]"' in done.stdout
        assert 'Argument 1 to "ListPorts" has incompatible type "str"; expected "int"' in done.stdout


def test_nothing_stays_after_it_is_removed(bare, tmp_path, root):
    environment = Environment(tmp_path / "venv", "/usr/bin/python3", bare)
    environment.run("qdp-host", "run", root / "examples" / "inventory.py")
    environment.run("python", "-m", "pip", "uninstall", "-q", "-y", "libqdp")
    left = {path.name for path in environment.packages().iterdir() if "qdp" in path.name}
    assert left == set() and not (environment.folder / "bin" / "qdp-host").exists()
