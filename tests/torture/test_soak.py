"""A short soak, the same each time; script/soak makes longer ones."""

import importlib.util
import itertools
import pathlib
import re
import subprocess
import sys

import pytest

PROGRAM = pathlib.Path(__file__).with_name("soak.py")
SPEC = importlib.util.spec_from_file_location("soak", PROGRAM)
soaking = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(soaking)

SEED = 20


def soak(build, *options):
    return subprocess.run(
        [sys.executable, str(PROGRAM), str(build), *options],
        capture_output=True,
        text=True,
        timeout=300,
    )


def test_soak(build):
    texts_only = ["--texts-only"] if "sanitize" in build.name else []
    done = soak(build, "--calls", "1", "--seed", str(SEED), *texts_only)
    assert (done.returncode, done.stderr) == (0, ""), done.stdout + done.stderr
    first, *_, last = done.stdout.splitlines()
    assert first == f"seed {SEED}"
    assert re.fullmatch(r"[0-9,]+ calls of 147 methods, [0-9,]+ a second", last)


def measured(what, values):
    """soaking.Measurements of which one thing took these values, and all others stayed as they were."""
    measurements = soaking.Measurements()
    for each, series in measurements.series.items():
        series.extend(values if each == what else [1000] * len(values))
    return measurements


@pytest.mark.parametrize("what", soaking.ALLOWED)
class TestGrowth:
    def test_loss_in_every_round_is_growth(self, what):
        losses = [soaking.ALLOWED[what] + 1 if i % 4 else 0 for i in range(soaking.LEAST_ROUNDS)]
        values = [1000 + int(each) for each in itertools.accumulate(losses)]
        assert soaking.too_much(measured(what, values).growth()) == [what]

    def test_single_steps_and_noise_are_no_growth(self, what):
        steps = [0, 0, 1 << 20, 0, 0, -3, 0, 0, 1 << 16, 0, 0, 1, 0, 0]
        assert len(steps) == soaking.LEAST_ROUNDS
        assert soaking.too_much(measured(what, [1000 + each for each in itertools.accumulate(steps)]).growth()) == []

    def test_growth_of_the_warm_up_is_none(self, what):
        values = [1000 * i for i in range(soaking.LEAST_ROUNDS // 3)]
        assert soaking.too_much(measured(what, values + [5000] * (soaking.LEAST_ROUNDS - len(values))).growth()) == []
