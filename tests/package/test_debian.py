"""The Debian packages: what is in them, what they depend on, and that their contents work once they are unpacked."""

import configparser
import os
import re
import tomllib

import pytest

from package.shared import host_files, output, ran

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


def fields(package):
    return dict(re.findall(r"^([\w-]+): (.*)$", output("dpkg-deb", "--field", package), re.MULTILINE))


def files(package):
    listed = output("dpkg-deb", "--contents", package).splitlines()
    return {line.split()[-1].removeprefix("./") for line in listed if not line.endswith("/")}


def test_two_packages(packages):
    assert sorted(packages) == [MODULE, HOST]


def test_the_module_and_its_stubs(packages):
    documents = {f"usr/share/doc/{MODULE}/{name}" for name in ("changelog.gz", "copyright")}
    in_path = {"_libqdp.abi3.so", "_libqdp-stubs/__init__.pyi", "_libqdp-stubs/py.typed"}
    assert files(packages[MODULE]) == documents | {f"{PYTHON_FOLDER}/{name}" for name in in_path}


def test_the_command_with_its_manual_and_completions(packages):
    shares = ("man/man1/qdp.1.gz", "bash-completion/completions/qdp", "zsh/vendor-completions/_qdp")
    shares += ("fish/vendor_completions.d/qdp.fish", "ansible/plugins/modules/qdp_settings.py")
    shares += ("ansible/plugins/modules/qdp_facts.py",)
    assert files(packages[MODULE]) >= {"usr/bin/qdp", *("usr/share/" + share for share in shares)}


def test_the_command_runs_from_the_package(fresh_root, in_fresh_root, tmp_path):
    in_fresh_root["LD_LIBRARY_PATH"] = str(fresh_root / PYTHON_FOLDER / "qdp_host" / "stand_ins")
    assert output(fresh_root / "usr/bin/qdp", "switch", "show", env=in_fresh_root, cwd=tmp_path).startswith("switch  name")


def test_the_host_and_its_command(packages, root):
    found = files(packages[HOST])
    in_package = {name.removeprefix(f"{PYTHON_FOLDER}/qdp_host/") for name in found if "/qdp_host/" in name}
    assert {"__main__.py", *(f"stand_ins/{name}" for name in STAND_INS)} <= in_package
    assert in_package == host_files(root)
    assert "usr/bin/qdp-host" in found


def test_dependencies(packages):
    module, host = fields(packages[MODULE]), fields(packages[HOST])
    assert module["Version"] == host["Version"]
    python, *libraries = module["Depends"].split(", ")
    assert python == "python3 (>= 3.6)"
    assert [each.split()[0] for each in libraries] == ["libc6"]
    assert f"{MODULE} (= {host['Version']})" in host["Depends"].split(", ")


def test_the_command_and_the_plugin_are_those_of_the_wheel(root, fresh_root):
    (metadata,) = fresh_root.glob(f"{PYTHON_FOLDER}/*.dist-info")
    project = tomllib.loads((root / "pyproject.toml").read_text())["project"]
    parser = configparser.ConfigParser()
    parser.optionxform = str
    parser.read(metadata / "entry_points.txt")
    wanted = {"console_scripts": project["scripts"], **project["entry-points"]}
    assert {name: dict(parser[name]) for name in parser.sections()} == wanted
    (version,) = re.findall(r"^project\(libqdp VERSION (\S+)", (root / "CMakeLists.txt").read_text(), re.MULTILINE)
    assert metadata.name == f"{project['name']}-{version}.dist-info"
    assert f"\nVersion: {version}\n" in (metadata / "METADATA").read_text()


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
