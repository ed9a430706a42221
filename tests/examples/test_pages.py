"""How the examples read a list page by page, whatever a library answers."""

import importlib.util
import sys

import pytest


@pytest.fixture(scope="module")
def datapath(root):
    spec = importlib.util.spec_from_file_location("command_of_examples", root / "examples" / "command.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module.Datapath("test")


@pytest.mark.parametrize(
    "pages, starts",
    [
        ({0: ("ab", 2), 2: ("c", 3), 3: ("", 3)}, [0, 2, 3]),  # complete when empty
        ({0: ("ab", 2), 2: ("c", 0)}, [0, 2]),  # complete when 0
        ({0: ("ab", 2), 2: ("c", 2)}, [0, 2]),  # complete when the same again
        ({0: ("ab", 5), 5: ("c", 2)}, [0, 5]),  # backwards
        ({0: ("ab", 9), 9: ("c", 10)}, [0, 9]),  # the last index at which a page may start
        ({0: ("ab", 10)}, [0]),  # the end
        ({0: ("ab", 65535)}, [0]),
        ({0: ("", 9)}, [0]),
        ({0: ("ab", 2), 2: None}, [0, 2]),  # refused
    ],
)
def test_how_a_list_ends(datapath, pages, starts):
    asked = []

    def read(start):
        asked.append(start)
        page = pages[start]
        return page and {"list": [{"letter": letter} for letter in page[0]], "next": page[1]}

    found = [entry["letter"] for entry in datapath.pages(read, "list", "next", end=10)]
    assert asked == starts
    assert found == [letter for start in starts if pages[start] for letter in pages[start][0]]
    assert "command" not in sys.modules  # nothing of the examples is left where other tests look for modules
