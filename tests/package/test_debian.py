"""The Debian packages: what is in them, what they depend on, and that their contents work once they are unpacked."""

import configparser
import os
import gzip
import re
import tomllib

import pytest

from package.shared import ansible_modules, command_documents, examples, host_files, layer_files, output, ran

MODULE, HOST = "python3-libqdp", "qdp-host"
STAND_INS = ("libqdp.so", "libqdpcapture.so", "libqdphost.so", "libqmtPublic.so")
PYTHON_FOLDER = "usr/lib/python3/dist-packages"


@pytest.fixture(scope="session")
def packages(root, build, tmp_path_factory):
    """The packages' files, by the packages' names."""
    environment = {**os.environ, "LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": str(build)}
    command_files = root / "package" / "command_files.py"
    output("/usr/bin/python3", command_files, build / "package" / "command", env=environment)
    folder = tmp_path_factory.mktemp("packages")
    output("/usr/bin/cpack", "-B", folder, cwd=build)
    return {path.name.split("_")[0]: path for path in folder.glob("*.deb")}


@pytest.fixture(scope="session")
def fresh_root(packages, tmp_path_factory):
    """A root with nothing but the packages' files."""
    folder = tmp_path_factory.mktemp("root")
    for package in packages.values():
        output("dpkg-deb", "--extract", package, folder)
    return folder


@pytest.fixture(scope="session")
def version(root):
    (found,) = re.findall(r"^project\(libqdp VERSION (\S+)", (root / "CMakeLists.txt").read_text(), re.MULTILINE)
    return found


def fields(package):
    return dict(re.findall(r"^([\w-]+): (.*)$", output("dpkg-deb", "--field", package), re.MULTILINE))


def files(package):
    listed = output("dpkg-deb", "--contents", package).splitlines()
    return {line.split()[-1].removeprefix("./") for line in listed if not line.endswith("/")}


def test_two_packages(packages):
    assert sorted(packages) == [MODULE, HOST]


def test_the_module_its_stubs_and_the_operator_layer(packages, root, version):
    documents = {f"usr/share/doc/{MODULE}/{name}" for name in ("changelog.gz", "copyright", "CHANGELOG.md")}
    documents |= {f"usr/share/{name}" for name in command_documents("qdp") | ansible_modules(root)}
    in_path = {"_libqdp.abi3.so", "_libqdp-stubs/__init__.pyi", "_libqdp-stubs/py.typed"}
    in_path |= {f"qdp/{name}" for name in layer_files(root)}
    in_path |= {f"libqdp-{version}.dist-info/{name}" for name in ("METADATA", "entry_points.txt")}
    assert {name.removeprefix("usr/lib/systemd/") for name in files(packages[MODULE])} - documents == {
        f"{PYTHON_FOLDER}/{name}" for name in in_path
    } | {"usr/bin/qdp", "system/qdp-exporter.service"}
    assert documents <= files(packages[MODULE])


def test_the_command_runs_from_the_package(fresh_root, in_fresh_root, tmp_path):
    in_fresh_root["LD_LIBRARY_PATH"] = str(fresh_root / PYTHON_FOLDER / "qdp_host" / "stand_ins")
    assert output(fresh_root / "usr/bin/qdp", "switch", "show", env=in_fresh_root, cwd=tmp_path).startswith(
        "switch  name"
    )


def test_the_host_and_its_command(packages, root):
    found = files(packages[HOST])
    in_package = {name.removeprefix(f"{PYTHON_FOLDER}/qdp_host/") for name in found if "/qdp_host/" in name}
    assert {"__main__.py", *(f"stand_ins/{name}" for name in STAND_INS)} <= in_package
    assert in_package == host_files(root)
    documents = {f"usr/share/doc/{HOST}/{name}" for name in examples(root)}
    documents |= {f"usr/share/{name}" for name in command_documents("qdp-host")}
    assert {"usr/bin/qdp-host"} | documents <= found


@pytest.mark.parametrize(
    "command, said",
    [
        ("qdp-host", ["run scripts of _libqdp on the embedded host", r"\-\-scenario", "check"]),
        ("qdp", ["show and steer the host's accelerated packet datapath", "switch", "balancer"]),
    ],
)
def test_man_pages_and_completions_know_the_command(fresh_root, command, said):
    share = fresh_root / "usr/share"
    page = gzip.decompress((share / f"man/man1/{command}.1.gz").read_bytes()).decode()
    assert page.startswith(f".TH {command} ") and [text for text in said if text not in page] == []
    completions = share / f"bash-completion/completions/{command}"
    output("/bin/bash", "-n", completions)
    first = {"qdp-host": "check", "qdp": "switch"}[command]
    script = f"source {completions}; COMP_WORDS=({command} {first[:3]}); COMP_CWORD=1; "
    function = re.search(r"complete .*-F (\w+)", completions.read_text())[1]
    completed = output("/bin/bash", "-c", script + f"{function}; echo ${{COMPREPLY[@]}}")
    assert first in completed.split()
    assert f"#compdef {command}\n" in (share / f"zsh/vendor-completions/_{command}").read_text()


def test_dependencies(packages):
    module, host = fields(packages[MODULE]), fields(packages[HOST])
    assert module["Version"] == host["Version"]
    python, *libraries = module["Depends"].split(", ")
    assert python == "python3 (>= 3.6)"
    assert [each.split()[0] for each in libraries] == ["libc6"]
    assert f"{MODULE} (= {host['Version']})" in host["Depends"].split(", ")


def test_the_commands_and_the_plugin_are_those_of_the_wheel(root, fresh_root, version):
    found = {}
    for name in ("libqdp", "qdp_host"):
        metadata = fresh_root / PYTHON_FOLDER / f"{name}-{version}.dist-info"
        parser = configparser.ConfigParser()
        parser.optionxform = str
        parser.read(metadata / "entry_points.txt")
        for group in parser.sections():
            found.setdefault(group, {}).update(parser[group])
        assert f"\nVersion: {version}\n" in (metadata / "METADATA").read_text()
    project = tomllib.loads((root / "pyproject.toml").read_text())["project"]
    assert found == {"console_scripts": project["scripts"], **project["entry-points"]}
    assert len(list(fresh_root.glob(f"{PYTHON_FOLDER}/*.dist-info"))) == 2


def test_the_module_imports_where_the_platform_is(fresh_root, in_fresh_root):
    """The stand-ins play the platform: they are named as a host would name its own libraries."""
    in_fresh_root["LD_LIBRARY_PATH"] = str(fresh_root / PYTHON_FOLDER / "qdp_host" / "stand_ins")
    script = "import _libqdp; print(_libqdp.__file__, len(_libqdp.ListSwitches()))"
    said = output("/usr/bin/python3", "-c", script, env=in_fresh_root)
    assert said == f"{fresh_root / PYTHON_FOLDER / '_libqdp.abi3.so'} 3\n"


def test_the_stand_ins_are_not_found_unasked(in_fresh_root):
    done = ran("/usr/bin/python3", "-c", "import _libqdp", env=in_fresh_root)
    assert done.returncode == 1
    assert "ImportError: libqdp.so: cannot open shared object file" in done.stderr


def test_the_layers_command_runs(fresh_root, in_fresh_root, tmp_path):
    commands = fresh_root / "usr/bin"
    said = output(commands / "qdp-host", "run", commands / "qdp", "switch", "show", env=in_fresh_root, cwd=tmp_path)
    assert "portset-0" in said and "dvs-storage" in said


def test_the_command_runs_an_example(root, fresh_root, in_fresh_root, tmp_path):
    said = output(
        fresh_root / "usr/bin/qdp-host", "run", root / "examples" / "inventory.py", env=in_fresh_root, cwd=tmp_path
    )
    assert said.startswith("Switches\n") and "\nPorts of switch 0, portset-0\n" in said


def test_the_command_records_a_scenario_and_replays_it(root, fresh_root, in_fresh_root, tmp_path):
    command, example = fresh_root / "usr/bin/qdp-host", root / "examples" / "inventory.py"
    capture = tmp_path / "captured"
    options = ["--scenario", "mux", "--capture", capture]
    recorded = output(command, "run", *options, example, "--json", env=in_fresh_root, cwd=tmp_path)
    assert '"dvs-mux"' in recorded
    assert output(command, "run", "--replay", capture, example, "--json", env=in_fresh_root, cwd=tmp_path) == recorded


@pytest.mark.parametrize("name", STAND_INS)
def test_a_stand_in_loads_by_its_path_alone(fresh_root, in_fresh_root, name):
    path = fresh_root / PYTHON_FOLDER / "qdp_host" / "stand_ins" / name
    output("/usr/bin/python3", "-c", f"import ctypes; ctypes.CDLL({str(path)!r})", env=in_fresh_root)
