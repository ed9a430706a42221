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


def replay_damaged(build, root, recorded, times):
    script = root / "tests" / "host" / "damaged.py"
    code, printed, error = qdp_host(
        build, "run", script, "replay", recorded / "capture", recorded / "methods", str(times)
    )
    assert code == 0, "\n".join(error.splitlines()[-20:])
    counts = json.loads(printed)
    assert counts["refused"] + counts["answered"] == times
    # Either kind is there, or the damage would be of one kind.
    assert min(counts.values()) > times / 20


def test_damaged_captures_are_refused_or_answer(build, root, recorded):
    replay_damaged(build, root, recorded, 300)


@pytest.mark.long
def test_ten_thousand_damaged_captures(build, root, recorded):
    replay_damaged(build, root, recorded, 10_000)
