"""Damaged captures: each is refused with a message or answers, and no process ends by a signal."""

import json

import pytest

from host.command import qdp_host


@pytest.fixture(scope="module")
def recorded(build, root, tmp_path_factory):
    """A capture of every method, and the file that says where each method's calls are."""
    folder = tmp_path_factory.mktemp("damaged")
    code, printed, _ = qdp_host(
        build, "run", "--capture", folder / "capture", root / "tests" / "host" / "damaged.py", "record"
    )
    assert code == 0 and len(json.loads(printed)) == 148
    (folder / "methods").write_text(printed)
    return folder


def replay_damaged(build, root, recorded, first, end):
    script = root / "tests" / "host" / "damaged.py"
    code, printed, error = qdp_host(
        build, "run", script, "replay", recorded / "capture", recorded / "methods", str(first), str(end)
    )
    assert code == 0, "\n".join(error.splitlines()[-20:])
    counts = json.loads(printed)
    assert counts["refused"] + counts["answered"] == end - first
    # Either kind is there, or the damage would be of one kind.
    assert min(counts.values()) > (end - first) / 20


def test_damaged_captures_are_refused_or_answer(build, root, recorded):
    replay_damaged(build, root, recorded, 0, 300)


@pytest.mark.long
@pytest.mark.parametrize("first", range(0, 10_000, 500))
def test_ten_thousand_damaged_captures(build, root, recorded, first):
    replay_damaged(build, root, recorded, first, first + 500)
