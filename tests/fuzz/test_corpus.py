"""The fuzzers' corpora, executed again: hostile answers, arguments and files that were worth keeping, crashes that were
found."""

import subprocess

import pytest

TARGETS = 147 + 19  # methods, and the module's plain functions


def replay(build, kind, inputs):
    return subprocess.run(
        [str(build / "fuzz" / f"replay_{kind}"), *map(str, inputs)],
        capture_output=True,
        text=True,
        errors="replace",
        timeout=600,
    )


def is_executed(build, kind, corpus):
    done = replay(build, kind, corpus)
    assert done.returncode == 0, done.stderr[-10000:]
    assert done.stdout == f"{len(corpus)} inputs replayed\n"


def test_corpus(root, build):
    corpus = sorted((root / "fuzz" / "corpus").iterdir())
    assert {path.read_bytes()[0] % TARGETS for path in corpus} == set(range(TARGETS))
    is_executed(build, "methods", corpus)


@pytest.mark.parametrize("kind", ["scenarios", "captures"])
def test_corpus_of_files(root, build, kind):
    corpus = sorted((root / "fuzz" / "files" / "corpus" / kind).iterdir())
    assert len(corpus) > 300
    is_executed(build, kind, corpus)
