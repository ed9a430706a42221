"""Trials of mutants: each in a process of its own, forked from one that has loaded the module and collected the tests
once, where the change is made and the tests that concern it run until one of them fails."""

import collections
import ctypes
import gc
import mmap
import os
import pathlib
import resource
import select
import signal
import struct
import sys
import tempfile
import time
from dataclasses import dataclass

import pytest

from mutate.concern import FOLDERS, Concern
from mutate.rebuild import UNCHANGED, NotBuilt

# What a trial's process ends with; a signal ends it when the change makes it crash or run on.
SURVIVED, NOTICED, BROKEN, NOT_BUILT = 0, 1, 2, 3

TEST_SECONDS = 10  # of the processor, for one test; then it counts as one that never ends
STALLED_SECONDS = 60  # of one test that waits for something
TRIAL_SECONDS = 20  # of the processor, for all tests; what they have not noticed by then counts as not noticed
ADDRESS_SPACE = 4 << 30

POSITION = struct.Struct("<i")
BUILDING = -1  # in place of a position, until the tests begin

RECENT = 12  # tests that noticed the latest mutants of a source, which are tried first


@dataclass
class Result:
    """Whether a mutant was noticed, by which test, and how it showed: "failed", "crashed" or "ran on"."""

    noticed: bool
    test: str = ""
    how: str = ""


class Trial:
    """One running process."""

    def __init__(self, run, items):
        self.items = items
        self._position = mmap.mmap(-1, POSITION.size)  # of the running test
        self._position[:] = POSITION.pack(BUILDING)
        self._seen, self._since = BUILDING, time.monotonic()
        self._killed = False
        self.pid = os.fork()
        if self.pid == 0:
            self._run(run)
        self.pidfd = os.pidfd_open(self.pid)

    def _run(self, run):
        status = BROKEN
        try:
            os.setpgid(0, 0)
            resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            nothing = os.open(os.devnull, os.O_RDWR)
            for stream in (0, 1, 2):
                os.dup2(nothing, stream)
            run(self.items, self._note)
            status = SURVIVED
        except NotBuilt:
            status = NOT_BUILT
        finally:
            os._exit(status)

    def _note(self, position):
        self._position[:] = POSITION.pack(position)
        signal.setitimer(signal.ITIMER_PROF, TEST_SECONDS)  # SIGPROF ends the process

    @property
    def item(self):
        return self.items[self._at()]

    def _at(self):
        return POSITION.unpack(self._position[:])[0]

    def kill_if_stalled(self):
        now = self._at()
        if now == BUILDING:  # which ends, however slow a busy machine makes it
            return
        if now != self._seen:
            self._seen, self._since = now, time.monotonic()
        elif time.monotonic() - self._since > STALLED_SECONDS and not self._killed:
            self._killed = True
            os.killpg(self.pid, signal.SIGKILL)

    def result(self):
        """Waits for the end; None for a change that makes no other module."""
        _, status = os.waitpid(self.pid, 0)
        os.close(self.pidfd)
        code = os.waitstatus_to_exitcode(status)
        if code == SURVIVED:
            return Result(False)
        if code == NOT_BUILT:
            return None
        if code == BROKEN:
            raise RuntimeError("a change could not be made; the tool does not fit the built module")
        how = "failed" if code == NOTICED else "ran on" if self._killed or code == -signal.SIGPROF else "crashed"
        return Result(True, self.item.nodeid, how)


class InMemory:
    """Makes changes in what this process has loaded, and in a copy of the module's file for tests that start
    processes."""

    def __init__(self, image):
        self._image = image

    def make(self, mutant, build):
        """The changed build in a folder; gives the module that is loaded."""
        edits = mutant.edits if mutant else ()
        self._image.apply(edits)
        path = self._image.module.path
        if not (build / "host").exists():
            for name in (*UNCHANGED, "tests"):
                (build / name).symlink_to(path.parent / name)
        (build / path.name).write_bytes(self._image.changed_file(edits))
        return path

    def provide(self, item):
        """What a test loads beside the module is there."""


def try_all(maker, sources, mutants, jobs, report, most=None):
    """Tries mutants, at most so many that make another module; `report` gets each with its result."""
    if mutants:
        with tempfile.TemporaryDirectory() as folder:
            most = len(mutants) if most is None else most
            _try_all(Trials(maker, sources, mutants, jobs, pathlib.Path(folder), report, most), sources)


def _try_all(trials, sources):
    options = ["--capture=no", "--assert=plain", "-p", "no:terminal", "-p", "no:faulthandler"]
    folders = [str(sources.root / "tests" / each) for each in FOLDERS]
    pytest.main([*options, f"--rootdir={sources.root}", *folders], plugins=[trials])
    if trials.failure:
        raise trials.failure


class Trials:
    """A plugin of pytest that tries mutants in place of running the tests."""

    def __init__(self, maker, sources, mutants, jobs, folder, report, most):
        self._maker = maker
        self._left = most
        self._sources = sources
        self._mutants = mutants
        self._jobs = jobs
        self._folder = folder
        self._report = report
        self._recent = {}
        self._sound = set()  # tests that noticed a change and pass without one
        self._unsound = set()  # those that fail without one, too
        self.failure = RuntimeError("the tests could not be collected; script/test shows why")

    @pytest.hookimpl(tryfirst=True)
    def pytest_runtestloop(self, session):
        if not session.testsfailed:
            try:
                self._run(session)
                self.failure = None
            except (Exception, KeyboardInterrupt) as failure:  # which pytest would keep to itself
                self.failure = failure
        return True

    def _run(self, session):
        self._items = {each.nodeid: each for each in session.items}
        self._concern = Concern(self._sources, session.items)
        plugins = session.config.pluginmanager.get_plugins()
        self._conftest = next(each for each in plugins if hasattr(each, "the_module"))
        gc.freeze()  # or each process would copy all of this one when it first collects
        waiting = collections.deque(self._mutants)
        running = {}  # by the descriptors of their processes
        free = list(range(self._jobs))
        while True:
            while waiting and free and len(running) < self._left:
                mutant = waiting.popleft()
                slot = free.pop()
                trial = self._start(mutant, slot)
                running[trial.pidfd] = trial, mutant, slot
            if not running:
                return
            ended, _, _ = select.select(list(running), [], [], 1)
            for each in ended:
                trial, mutant, slot = running.pop(each)
                free.append(slot)
                if result := trial.result():
                    if result.noticed and not self._is_sound(self._items[result.test]):
                        waiting.appendleft(mutant)
                        continue
                    self._left -= 1
                    self._end(mutant, result)
            for trial, _, _ in running.values():
                trial.kill_if_stalled()

    @pytest.hookimpl(tryfirst=True)
    def pytest_runtest_makereport(self, item, call):
        if call.excinfo and not call.excinfo.errisinstance(pytest.skip.Exception):
            os._exit(NOTICED)

    def _start(self, mutant, slot):
        recent = self._recent.setdefault(mutant.files[0], {})
        ordered = dict.fromkeys([*reversed(recent), *self._concern.items(mutant)])
        return Trial(self._trying(mutant, slot), [item for item in ordered if item not in self._unsound])

    def _end(self, mutant, result):
        if result.noticed:
            item = self._items[result.test]
            recent = self._recent[mutant.files[0]]
            recent.pop(item, None)
            recent[item] = None
            if len(recent) > RECENT:
                recent.pop(next(iter(recent)))
        self._report(mutant, result)

    def _is_sound(self, item):
        """A test has noticed nothing when it fails without a change, too: then the change is tried again without it."""
        if item in self._sound:
            return True
        if Trial(self._trying(None, self._jobs), [item]).result().noticed:
            self._unsound.add(item)
            print(f"{item.nodeid} fails in a trial without a change, and is left out")
            return False
        self._sound.add(item)
        return True

    def _trying(self, mutant, slot):
        def run(items, note):
            build = self._folder / f"changed-{slot}"
            build.mkdir(exist_ok=True)
            module = self._maker.make(mutant, build)
            self._conftest.BUILD = build
            self._conftest.the_module.__file__ = str(module)
            sys.path.insert(0, str(build / "tests"))
            note(0)
            self._import_again()
            for position, item in enumerate(items):
                if time.process_time() > TRIAL_SECONDS:
                    break
                note(position)
                self._maker.provide(item)
                following = items[position + 1] if position + 1 < len(items) else None
                item.config.hook.pytest_runtest_protocol(item=item, nextitem=following)

        return run

    def _import_again(self):
        """The module's initialiser runs anew, on the module's object that the tests have."""
        try:
            initialise = ctypes.PyDLL(self._conftest.the_module.__file__).PyInit__libqdp
            initialise.restype = ctypes.py_object
            fresh = vars(initialise())
        except Exception:  # a function that nobody defines any more, or what the initialiser raises
            os._exit(NOTICED)
        attributes = vars(self._conftest.the_module)
        before = dict(attributes)
        attributes.clear()
        attributes.update(fresh)
        for name, value in before.items():
            if name.startswith("__") and attributes.get(name) is None:
                attributes[name] = value
