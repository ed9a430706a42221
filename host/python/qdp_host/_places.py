"""Where things are: the stand-ins, the module and the scenarios, in an installed package and in a checkout."""

import os
import sys
from typing import Dict, List, Optional, Sequence, Union

PACKAGE = os.path.dirname(os.path.abspath(__file__))
CHECKOUT = os.path.dirname(os.path.dirname(os.path.dirname(PACKAGE)))
LIBRARIES_VARIABLE = "QDP_HOST_LIBRARIES"
STAND_INS = ("libqdp.so", "libqmtPublic.so")
CONTROL = "libqdphost.so"
CAPTURE = "libqdpcapture.so"
SCHEMA = "schema.json"  # beside the scenarios
MODULE = "_libqdp."  # how its file's name begins

Path = Union[str, "os.PathLike[str]"]


class HostError(Exception):
    """The embedded host could not be set up; the text says why."""


def libraries() -> str:
    """The folder of the stand-ins."""
    installed = os.path.join(PACKAGE, "stand_ins")
    if os.path.isdir(installed):
        return installed
    return os.path.abspath(os.environ.get(LIBRARIES_VARIABLE) or os.path.join(CHECKOUT, "build", "release", "host"))


def library(folder: str, name: str) -> str:
    """The path of one of them, which is there."""
    path = os.path.join(folder, name)
    if not os.path.exists(path):
        raise HostError(
            "the embedded host has no {} in {}; script/build builds it, {} names another folder".format(
                name, folder, LIBRARIES_VARIABLE
            )
        )
    return path


def _has_module(folder: str) -> bool:
    return os.path.isdir(folder) and any(name.startswith(MODULE) for name in os.listdir(folder))


def module_folder(folder: str) -> Optional[str]:
    """The folder to add to Python's path so that it finds the module; None where it is installed."""
    beside = os.path.dirname(folder)
    return beside if _has_module(beside) else None


def python_path(folder: str, interpreter: str) -> List[str]:
    """What the path of this interpreter lacks.

    In a checkout, the folders of the module and of this package; where they are installed, a folder from which another
    interpreter than the one that has them imports them alone, and not what else is installed beside them.
    """
    beside = module_folder(folder)
    if beside:
        return [beside, os.path.dirname(PACKAGE)]
    if os.path.abspath(interpreter) == os.path.abspath(sys.executable):
        return []
    return [os.path.join(PACKAGE, "other_interpreters")]


def extend(environment: Dict[str, str], variable: str, folders: Sequence[str]) -> None:
    """Puts folders in front of a path."""
    path = os.pathsep.join(list(folders) + list(filter(None, [environment.get(variable)])))
    if path:
        environment[variable] = path


def environment(folder: str, interpreter: str) -> Dict[str, str]:
    """This process's environment with what an interpreter needs to find the stand-ins of a folder, and the module."""
    made = dict(os.environ)
    extend(made, "LD_LIBRARY_PATH", [folder])
    extend(made, "PYTHONPATH", python_path(folder, interpreter))
    return made


def _scenarios() -> str:
    """The folder of the scenarios that come along."""
    installed = os.path.join(PACKAGE, "scenarios")
    return installed if os.path.isdir(installed) else os.path.join(CHECKOUT, "host", "scenarios")


def scenario_names() -> List[str]:
    folder = _scenarios()
    found = os.listdir(folder) if os.path.isdir(folder) else []
    return sorted(name[: -len(".json")] for name in found if name.endswith(".json") and name != SCHEMA)


def scenario_file(scenario: Path) -> str:
    """The path of a scenario: that of a file as it is, of one that comes along by its name."""
    text = os.fspath(scenario)
    if text in scenario_names():
        return os.path.join(_scenarios(), text + ".json")
    if os.sep not in text and not text.endswith(".json") and not os.path.exists(text):
        raise HostError(
            "there is no scenario {!r}; name a file, or one of: {}".format(text, ", ".join(scenario_names()))
        )
    return os.path.abspath(text)
