"""The fuzzer's corpus, executed again: hostile answers and arguments that were worth keeping, crashes that were found."""

import subprocess

TARGETS = 147 + 19  # methods, and the module's plain functions


def replay(build, inputs):
    return subprocess.run(
        [str(build / "fuzz" / "replay"), *map(str, inputs)], capture_output=True, text=True, errors="replace", timeout=600
    )


def test_corpus(root, build):
    corpus = sorted((root / "fuzz" / "corpus").iterdir())
    assert {path.read_bytes()[0] % TARGETS for path in corpus} == set(range(TARGETS))
    done = replay(build, corpus)
    assert done.returncode == 0, done.stderr[-10000:]
    assert done.stdout == f"{len(corpus)} inputs replayed\n"
