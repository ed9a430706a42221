"""Calls all methods on the embedded host with random arguments, for a time or a number of calls: the heap stays flat,
and nothing is printed or raised that is not documented. `python3 soak.py BUILD --seconds 60`; see script/soak."""

import argparse
import array
import ctypes
import gc
import os
import pathlib
import random
import statistics
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path[:0] = [str(ROOT / "host" / "python"), str(ROOT / "tests")]

from contract import RECIPES  # noqa: E402
from documented import PRINTED  # noqa: E402
from heap import bytes_in_use  # noqa: E402
from qdp_host import EmbeddedHost  # noqa: E402
from recipes import ALIAS, is_made_of  # noqa: E402

# The host is put back so often, since calls take it apart; memory is measured right behind it.
CALLS_A_ROUND = 5_000

# Fewer rounds show no growth apart from noise.
LEAST_ROUNDS = 14

# Rounds between two lines of progress.
PROGRESS = 20

# Recipes that ask the host are asked anew once in so many calls; in between, their last arguments stand.
CALLS_A_RECIPE = 500

# The share of the measurements that comes before memory has reached what the module and the interpreter keep for reuse.
WARM_UP = 0.3

# Growth from one round to the next that is none: a method of 147 that loses its smallest block with every call adds 34
# blocks, of 16 bytes or more, to a round. What is kept for reuse grows in single rounds, which the median leaves out.
ALLOWED = {"bytes of the heap": 256, "blocks of the interpreter": 16, "open files": 0.5}

# What may be raised: by the three methods that raise, by the interpreter's check, or for a text that is no UTF-8.
RAISED = (ValueError, OSError, SystemError, TypeError)
COMPLAINTS = ("returned a result with an exception set", "returned NULL without setting an exception")

NUMBERS = [
    15,
    16,
    63,
    64,
    1023,
    1024,
    4094,
    4095,
    16383,
    16384,
    0xFFFF,
    1 << 22,
    0xFFFFFFFF,
    1 << 32,
    -1,
    1 << 63,
    1 << 80,
]
TEXTS = [
    ALIAS,
    "dvs-storage",
    "nic0",
    "nic1",
    "VLANMAC",
    "cpu",
    "count",
    "none",
    "cpuload_low",
    "10.20.0.5",
    "fe80::1",
    "",
    "unknown",
]
OTHERS = [None, 1.5, b"cpu", [1], object(), "nul\0", "\udc80"]


class Arguments:
    """Random arguments for methods: mostly such that the host has what they name."""

    def __init__(self, module, seed):
        self._module = module
        self._random = random.Random(seed)
        self._of_recipe = {name: is_made_of(recipe, module) for name, recipe in RECIPES.items()}

    def next(self):
        """A method's name and its arguments."""
        name = self._random.choice(NAMES)
        arguments = self._recipe(name)
        chance = self._random.random()
        if chance < 0.4:
            return name, arguments
        if chance < 0.95:
            return name, tuple(self._near(value) for value in arguments)
        wrong = tuple(self._random.choice(OTHERS) if self._random.random() < 0.3 else value for value in arguments)
        return name, wrong + (0,) if chance > 0.99 else wrong

    def _recipe(self, name):
        if callable(RECIPES[name]) and self._random.random() < 1 / CALLS_A_RECIPE:
            try:
                self._of_recipe[name] = is_made_of(RECIPES[name], self._module)
            except Exception:  # the host has lost what the recipe looks for; it comes back with the next round
                pass
        return self._of_recipe[name]

    def _near(self, value):
        """The value, or one of its type."""
        chance = self._random.random()
        if chance < 0.5:
            return value
        if isinstance(value, bool):
            return chance < 0.75
        if isinstance(value, int):
            return self._number(chance)
        if isinstance(value, str):
            return self._random.choice(TEXTS)
        if isinstance(value, tuple):
            return tuple(self._near(item) for item in value) * self._random.randrange(4)
        return {key: self._near(item) for key, item in value.items() if self._random.random() < 0.8}

    def _number(self, chance):
        if chance < 0.8:
            return self._random.randrange(24)
        return self._random.choice(NUMBERS) if chance < 0.9 else self._random.getrandbits(32)


NAMES = list(RECIPES)


class StandardError:
    """What is written to the file descriptor of standard error, call by call. Each text is looked at once."""

    def __enter__(self):
        self._file = tempfile.TemporaryFile()
        self._descriptor = self._file.fileno()
        self._position = 0
        self._known = set()
        self._saved = os.dup(2)
        os.dup2(self._descriptor, 2)
        return self

    def __exit__(self, *exception):
        os.dup2(self._saved, 2)
        os.close(self._saved)
        self._file.close()

    def undocumented(self):
        """What the last call printed, if that is not documented; or an empty text."""
        size = os.lseek(2, 0, os.SEEK_CUR)
        if size == self._position:
            return ""
        text = os.pread(self._descriptor, size - self._position, self._position).decode()
        self._position = size
        if text not in self._known:
            if not PRINTED.fullmatch(text):
                return text
            self._known.add(text)
        return ""

    def rewind(self):
        os.ftruncate(2, 0)
        os.lseek(2, 0, os.SEEK_SET)
        self._position = 0
        self._known.clear()  # so that what is measured does not grow by it


class Measurements:
    """What has to stay flat, round by round. Arrays of numbers, which are no objects of the interpreter's."""

    def __init__(self):
        self.series = {what: array.array("q") for what in ALLOWED}

    def __len__(self):
        return len(self.series["open files"])

    def take(self):
        gc.collect()
        for what, measure in zip(self.series, (bytes_in_use, sys.getallocatedblocks, open_files)):
            self.series[what].append(measure())

    def growth(self):
        """The median of the growth from one round to the next, after the warm-up."""
        return {what: median_growth(values[int(len(values) * WARM_UP) :]) for what, values in self.series.items()}


def median_growth(values):
    return statistics.median(after - before for before, after in zip(values, values[1:]))


def open_files():
    return len(os.listdir("/proc/self/fd"))


def too_much(found):
    return [what for what, grown in found.items() if grown > ALLOWED[what]]


def call(module, name, arguments):
    """Why a call is not as documented, or an empty text."""
    try:
        getattr(module, name)(*arguments)
    except RAISED as failure:
        if isinstance(failure, SystemError) and not str(failure).endswith(COMPLAINTS):
            return repr(failure)
    except Exception as failure:
        return repr(failure)
    return ""


def soak(module, host, library_init, options):
    """The number of calls, the seconds they took, and what was measured; or ends the process with what is wrong."""
    arguments = None
    measurements, done = Measurements(), 0
    started = time.monotonic()

    def goes_on():
        if options.calls:
            return done < options.calls or len(measurements) < LEAST_ROUNDS
        return len(measurements) < LEAST_ROUNDS or time.monotonic() - started < options.seconds

    with StandardError() as error:
        while goes_on():
            host.reset()
            assert library_init() == 0
            arguments = arguments or Arguments(module, options.seed)
            error.rewind()
            measurements.take()
            for _ in range(CALLS_A_ROUND):
                name, given = arguments.next()
                wrong = call(module, name, given) or error.undocumented()
                if wrong:
                    sys.exit(f"call {done} with seed {options.seed}: {name}{given} is not documented to say: {wrong!r}")
                done += 1
            if options.progress and len(measurements) % PROGRESS == 0:
                now = ", ".join(f"{values[-1]:,} {what}" for what, values in measurements.series.items())
                print(f"{done:,} calls: {now}", flush=True)
    return done, time.monotonic() - started, measurements


def options_given():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="folder of the build")
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument(
        "--calls", type=int, help="so many calls instead, in whole rounds, of which there are some at least"
    )
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 32))
    parser.add_argument("--progress", action="store_true")
    parser.add_argument(
        "--texts-only", action="store_true", help="judge no memory: the sanitizers' allocator keeps what is given back"
    )
    return parser.parse_args()


def without_thread_cache():
    """Executes this program anew without the C library's caches of freed blocks, which count as memory in use."""
    setting = "glibc.malloc.tcache_count=0"
    if os.environ.get("GLIBC_TUNABLES") != setting:
        os.execve(sys.executable, [sys.executable, *sys.argv], {**os.environ, "GLIBC_TUNABLES": setting})


def main():
    options = options_given()
    if not options.texts_only:
        without_thread_cache()
    print(f"seed {options.seed}", flush=True)
    sys.path.insert(0, str(options.build.resolve()))
    host = EmbeddedHost(options.build / "host")
    import _libqdp

    done, seconds, measurements = soak(_libqdp, host, ctypes.PyDLL(_libqdp.__file__).LibraryInit, options)
    found = measurements.growth()
    print("growth of a round after the warm-up:", ", ".join(f"{grown:g} {what}" for what, grown in found.items()))
    if not options.texts_only and (wrong := too_much(found)):
        sys.exit(f"grows with seed {options.seed}: {', '.join(wrong)}")
    print(f"{done:,} calls of {len(NAMES)} methods, {done / seconds:,.0f} a second")


if __name__ == "__main__":
    main()
