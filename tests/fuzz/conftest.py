"""The replay of the fuzzer's inputs stands in builds with the sanitizers alone."""

import os
import pathlib

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = pathlib.Path(os.environ.get("QDP_BUILD", ROOT / "build" / "release"))

collect_ignore = [] if "QDP_SANITIZE:BOOL=ON" in (BUILD / "CMakeCache.txt").read_text() else ["test_corpus.py"]
