"""The exceptions of the operator layer, and the table of the texts that they stand for."""

import copy
import pickle
import re

import pytest

import qdp
from contract import METHODS
from documented import TEXTS
from qdp import errors

ROWS = [(row if isinstance(row, tuple) else (row, ""), kind) for kind, rows in errors.TEXTS.items() for row in rows]
TABLE = [text for (text, _), _ in ROWS]

# Texts of the module's own exceptions, see the stub's "Raised" and "Left set".
RAISED_TEXTS = {raised[1] for method in METHODS for raised in method.raises.values() if isinstance(raised, tuple)} | {
    "invalid parameter passed.",
    "Invalid parameter passed.",
    "Unknown parameter name.",
    "Failed to create dump buffer.",
    "Failed to create tuple.",
    "Invalid format in LB stats dump",
}


def filled_in(text):
    return text.replace("%s", "one two").replace("%d", "-5").replace("%u", "32").replace("%#x", "0xbad0001")


class TestTable:
    def test_each_text_has_one_row(self):
        assert sorted(TABLE) == sorted(set(TABLE))

    def test_every_text_of_the_module_is_there_and_no_other(self):
        known = {text.rstrip("\n") for text in TEXTS} | RAISED_TEXTS | {"SystemError: Failed to allocate buffer."}
        assert set(TABLE) == known

    @pytest.mark.parametrize("row, failure", ROWS, ids=lambda value: value[0] if isinstance(value, tuple) else "")
    def test_printed_text_has_its_class_and_hint(self, row, failure):
        text, hint = row
        printed = filled_in(text) + "\n"
        known, unknown, found = errors.split(printed)
        assert (known, unknown, found) == (printed, "", (failure, hint))

    def test_alias_with_a_line_break(self):
        printed = "Failed to find dvs ID for dvs alias one\ntwo.\n"
        assert errors.split(printed)[:2] == (printed, "")

    def test_more_than_one_text(self):
        balancer, port = "Please disable automatic thread load balancing.\n\n", "Failed to migrate port.\n"
        assert errors.split(balancer + port) == (balancer + port, "", (qdp.BalancerRunning, ""))
        refused = (qdp.Refused, "")
        assert errors.split("nothing known\n" + port + "nor this") == (port, "nothing known\nnor this", refused)
        assert errors.split(port.rstrip("\n") + " Not.\n") == ("", "Failed to migrate port. Not.\n", None)


class TestExceptions:
    BASES = {
        qdp.InvalidArgument: ValueError,
        qdp.NotFound: LookupError,
        qdp.BalancerRunning: qdp.Refused,
        qdp.NotStored: qdp.Refused,
        qdp.Unsupported: NotImplementedError,
        qdp.OutOfMemory: MemoryError,
    }

    @pytest.mark.parametrize("kind, base", BASES.items())
    def test_bases(self, kind, base):
        assert issubclass(kind, base) and issubclass(kind, qdp.QdpError)

    @pytest.mark.parametrize("kind", [*BASES, qdp.QdpError, qdp.Refused, qdp.NotApplied, qdp.BadAnswer])
    @pytest.mark.parametrize("copied", [copy.copy, copy.deepcopy, lambda e: pickle.loads(pickle.dumps(e))])
    def test_copies(self, kind, copied):
        failure = copied(kind("Failed.\n", "ListPorts", (3,), "try again"))
        assert type(failure) is kind
        assert (failure.text, failure.method, failure.arguments) == ("Failed.\n", "ListPorts", (3,))
        assert failure.hint == "try again"

    def test_text(self):
        failure = qdp.Refused("Failed to retrieve list of ports.\n", "ListPorts", (3,))
        assert str(failure) == "ListPorts(3): Failed to retrieve list of ports."
        assert str(qdp.Refused("", "GetLBMetric", ("a",))) == "GetLBMetric('a'): failed without a text"
        assert str(qdp.NotFound("there is no switch 'a'")) == "there is no switch 'a'"

    def test_each_class_has_a_hint(self):
        hints = [vars(kind)["default_hint"] for kind in [*errors.TEXTS, qdp.NotApplied]]
        assert len(set(hints)) == len(hints) and all(re.fullmatch("[^\n.]{10,}", hint) for hint in hints)
        assert qdp.Refused("").hint == qdp.Refused.default_hint


class TestPlaceholders:
    @pytest.mark.parametrize("size", ["", "many", "3 2"])
    def test_number_that_is_none_is_not_known(self, size):
        assert errors.split(f"ValueError: Ring size must be {size}aligned.\n")[2] is None
        if size:
            assert errors.split(f"ValueError: Ring size must be {size} aligned.\n")[2] is None

    def test_status_in_hexadecimal(self):
        assert errors.split("ValueError: Failed to dump debug buffer: 0xbad0003.\n")[2] == (qdp.Refused, "")
        assert errors.split("ValueError: Failed to dump debug buffer: bad-3.\n")[2] is None
