"""The capture of texts where it is hard: threads, signals, forks, and standard error that is closed, full or elsewhere.

Most of it runs in processes of its own, with each of the two captures: the C helper, and the one in Python.
"""

import os
import subprocess
import sys
import textwrap

import pytest

CAPTURES = ["helper", "python"]

# Both captures run the same scripts. `chosen` is the one in use.
BEFORE = """
import importlib, os, signal, sys, threading
if {without_helper}:
    sys.modules["qdp._call"] = None  # as where it is not built
import _libqdp, qdp
chosen = sys.modules["qdp.call"]._capture.__name__
def failing(method, *arguments):
    try:
        return qdp.call(method, *arguments)
    except qdp.QdpError as failure:
        return failure
"""


@pytest.fixture(params=CAPTURES)
def run(request, build, root, tmp_path):
    """Runs a script on the embedded host: its exit status, standard output and standard error."""

    def run(script, stderr=subprocess.PIPE, **options):
        text = BEFORE.format(without_helper=request.param == "python") + textwrap.dedent(script)
        text += "\nassert chosen == 'qdp._" + ("call" if request.param == "helper" else "capture") + "'\n"
        (tmp_path / "script.py").write_text(text)
        environment = {
            **os.environ,
            "LD_LIBRARY_PATH": str(build / "host"),
            "QDP_HOST_LIBRARIES": str(build / "host"),
            "PYTHONPATH": os.pathsep.join([str(build), str(root / "host" / "python")]),
        }
        done = subprocess.run(
            [sys.executable, str(tmp_path / "script.py")],
            env=environment, stdout=subprocess.PIPE, stderr=stderr, text=True, timeout=100, **options,
        )  # fmt: skip
        return done.returncode, done.stdout, done.stderr

    run.capture = request.param
    return run


NINE = "ListPorts(9): Failed to retrieve list of ports.\n"


def test_ends_with_nothing_on_standard_error(run):
    assert run("print(failing('ListPorts', 9))") == (0, NINE, "")


def test_bare_calls_print_as_ever(run):
    done = run("qdp.call('ListPorts', 0); print(_libqdp.ListPorts(9)); print(failing('ListPorts', 9))")
    assert done == (0, "None\n" + NINE, "Failed to retrieve list of ports.\n")


class TestStandardError:
    def test_closed(self, run):
        status, out, _ = run("print(failing('ListPorts', 9), end='')", preexec_fn=lambda: os.close(2))
        assert (status, out) == (0, NINE.rstrip("\n") + "")

    def test_full(self, run):
        with open("/dev/full", "w") as full:
            status, out, _ = run("print(failing('ListPorts', 9))", stderr=full)
        assert (status, out) == (0, NINE)

    def test_unknown_text_on_a_full_one_is_logged(self, run):
        script = """
            import logging
            logging.basicConfig(stream=sys.stdout, format="%(name)s %(message)s")
            def noisy():
                os.write(2, b"noise\\n") if chosen == "qdp._capture" else write_noise()
                return 5
            import ctypes
            libc = ctypes.PyDLL(None)
            def write_noise():
                libc.fputs(b"noise\\n", ctypes.c_void_p.in_dll(libc, "stderr"))
            print(qdp.call(noisy))
        """
        with open("/dev/full", "w") as full:
            assert run(script, stderr=full)[:2] == (0, "qdp noisy: noise\n5\n")

    def test_redirected_by_descriptor(self, run, tmp_path):
        script = """
            saved = os.dup(2)
            where = os.open("elsewhere", os.O_CREAT | os.O_WRONLY)
            os.dup2(where, 2)
            print(failing("ListPorts", 9), end="")
            _libqdp.ListPorts(10)
            os.dup2(saved, 2)
            _libqdp.ListPorts(11)
        """
        status, out, error = run(script, cwd=tmp_path)
        assert (status, out, error) == (0, NINE.rstrip(), "Failed to retrieve list of ports.\n")
        assert (tmp_path / "elsewhere").read_text() == "Failed to retrieve list of ports.\n"

    def test_redirected_in_python(self, run):
        script = """
            import contextlib, io
            with contextlib.redirect_stderr(io.StringIO()) as gathered:
                print(failing("ListPorts", 9), repr(gathered.getvalue()))
            sys.stderr = None
            print(failing("ListPorts", 9))
        """
        assert run(script)[1] == NINE.rstrip() + " ''\n" + NINE


# Threads call methods that fail with different texts, and one that succeeds; each text names the call it belongs to.
THREADS = """
    import time
    texts = {{
        ("ListPorts", 9): "Failed to retrieve list of ports.\\n",
        ("ListPorts", 99): "TypeError: Invalid switch ID passed.\\n",
        ("GetPortStats", 0, 9999): "Failed to retrieve port stats.\\n",
        ("GetLBMetric", "nowhere"): "Failed to find dvs ID for dvs alias nowhere.\\n",
        ("SetPortLRO", 9, 0, 1): "ValueError: Failed to set LRO.\\n\\n",
        ("DumpPortFlow",): "Dump Port Flow Not supported below 2.10.0.0\\n",
        ("GetUplinkStats", 0, 999): "Failed to get uplink stats.\\n",
        ("ListPorts", 0): None,
    }}
    end = time.monotonic() + {seconds}
    mixed, counts = [], []
    def caller(offset):
        calls = list(texts.items())
        count = 0
        while time.monotonic() < end:
            (method, *arguments), text = calls[(count + offset) % len(calls)]
            got = failing(method, *arguments)
            if (got.text if isinstance(got, qdp.QdpError) else None) != text:
                mixed.append((method, arguments, got))
            count += 1
        counts.append(count)
    bare_calls = [0]
    def bare():
        while time.monotonic() < end:
            _libqdp.ListPorts(10)
            bare_calls[0] += 1
            time.sleep(0.0001)
    sys.setswitchinterval(1e-5)
    threads = [threading.Thread(target=caller, args=(i,)) for i in range(8)]
    if {bare}: threads.append(threading.Thread(target=bare))
    for thread in threads: thread.start()
    for thread in threads: thread.join()
    print(len(mixed), sum(counts) > 800, *mixed[:3])
    print(bare_calls[0])
"""


def check_threads(run, seconds):
    """No text in the wrong thread, and every text of a bare call on standard error."""
    bare = 1 if run.capture == "helper" else 0  # the capture in Python takes what other threads print meanwhile
    status, out, error = run(THREADS.format(seconds=seconds, bare=bare))
    mixed, bare_calls = out.splitlines()
    assert (status, mixed) == (0, "0 True")
    assert error == "Failed to retrieve list of ports.\n" * int(bare_calls) and (int(bare_calls) > 10) == bool(bare)


def test_threads(run):
    check_threads(run, 2)


@pytest.mark.long
def test_threads_for_a_minute(run):
    check_threads(run, 60)


class TestSignals:
    def test_interrupt_of_a_long_dump(self, run):
        """An interrupt ends a dump that the platform would never finish, and leaves standard error as it was."""
        script = """
            from qdp_host import EmbeddedHost
            host = EmbeddedHost()
            host.delay("Qdp_DumpLBStats", 0.05, times=0)
            signal.signal(signal.SIGALRM, signal.default_int_handler)
            signal.setitimer(signal.ITIMER_REAL, 0.3)
            try:
                while True:
                    qdp.call("DumpLBStats", 0, 0, 16384, 0, 64)
            except KeyboardInterrupt:
                print("interrupted")
            _libqdp.ListPorts(10)
            print(failing("ListPorts", 9))
        """
        assert run(script) == (0, "interrupted\n" + NINE, "Failed to retrieve list of ports.\n")

    def test_call_in_a_handler_inside_a_call(self, run):
        """A handler runs inside the call; its calls have their own texts, and bare ones end on standard error."""
        script = """
            from qdp_host import EmbeddedHost
            host = EmbeddedHost()
            host.delay("Qdp_DumpLBStats", 0.05, times=0)
            inside = []
            def handler(number, frame):
                inside.append(failing("ListPorts", 9))
                _libqdp.ListPorts(10)
                signal.setitimer(signal.ITIMER_REAL, 0.02)  # no handler runs inside another
            signal.signal(signal.SIGALRM, handler)
            signal.setitimer(signal.ITIMER_REAL, 0.02)
            ports, uplinks, contexts = qdp.call("DumpLBStats", 0, 0, 16384, 0, 64)
            signal.setitimer(signal.ITIMER_REAL, 0)
            print(len(ports) > 0, {str(failure) for failure in inside}, len(inside) > 0)
            print(len(inside), file=sys.stderr)
        """
        status, out, error = run(script)
        assert (status, out) == (0, "True {%r} True\n" % NINE.rstrip())
        *texts, count = error.splitlines()
        assert texts == ["Failed to retrieve list of ports."] * int(count)

    def test_exception_of_a_handler_goes_through(self, run):
        script = """
            from qdp_host import EmbeddedHost
            EmbeddedHost().delay("Qdp_DumpLBStats", 0.05, times=0)
            class Late(ValueError): pass
            def handler(number, frame):
                raise Late("Invalid parameter passed.")
            signal.signal(signal.SIGALRM, handler)
            signal.setitimer(signal.ITIMER_REAL, 0.02)
            try:
                while True:
                    qdp.call("DumpLBStats", 0, 0, 16384, 0, 64)
            except Late as late:
                print(type(late).__name__)
        """
        assert run(script) == (0, "Late\n", "")


class TestProcesses:
    def test_fork_between_calls(self, run):
        script = """
            def child(number):
                pid = os.fork()
                if pid == 0:
                    print(failing("ListPorts", number), flush=True)
                    _libqdp.ListPorts(10)
                    os._exit(0)
                return os.waitpid(pid, 0)[1]
            print(failing("ListPorts", 9), flush=True)
            assert child(8) == 0
            print(failing("ListPorts", 9))
        """
        eight = NINE.replace("9", "8")
        assert run(script) == (0, NINE + eight + NINE, "Failed to retrieve list of ports.\n")

    def test_fork_while_another_thread_calls(self, run):
        script = """
            stop = []
            def caller():
                while not stop:
                    failing("ListPorts", 9)
            thread = threading.Thread(target=caller, daemon=True)
            thread.start()
            for _ in range(30):
                pid = os.fork()
                if pid == 0:
                    signal.alarm(10)
                    os._exit(0 if str(failing("ListPorts", 8)).startswith("ListPorts(8): Failed") else 1)
                assert os.waitpid(pid, 0)[1] == 0
            stop.append(1)
            thread.join()
        """
        assert run(script)[0] == 0

    def test_fork_in_a_handler_inside_a_call(self, run):
        script = """
            from qdp_host import EmbeddedHost
            EmbeddedHost().delay("Qdp_DumpLBStats", 0.05, times=0)
            statuses = []
            def handler(number, frame):
                pid = os.fork()
                if pid == 0:
                    os._exit(0 if str(failing("ListPorts", 8)).startswith("ListPorts(8): Failed") else 1)
                statuses.append(os.waitpid(pid, 0)[1])
            signal.signal(signal.SIGALRM, handler)
            signal.setitimer(signal.ITIMER_REAL, 0.02)
            qdp.call("DumpLBStats", 0, 0, 16384, 0, 64)
            print(statuses, failing("ListPorts", 9))
        """
        assert run(script) == (0, "[0] " + NINE, "")


# Fails in a sub-interpreter that shares the lock, and in one with a lock of its own where there are such.
SUBINTERPRETERS = """
    inside = '''if True:
        import sys
        sys.path[:] = %r
        try:
            import qdp
            qdp.call("ListPorts", 9)
        except Exception as failure:
            print(failure, flush=True)
    ''' % sys.path
    def run_inside(kind):
        try:
            import _interpreters
        except ImportError:
            import _xxsubinterpreters
            interpreter = _xxsubinterpreters.create(isolated=kind == "isolated")
            _xxsubinterpreters.run_string(interpreter, inside)
            _xxsubinterpreters.destroy(interpreter)
        else:
            interpreter = _interpreters.create(kind)
            _interpreters.exec(interpreter, inside)
            _interpreters.destroy(interpreter)
    print(failing("ListPorts", 9), flush=True)
    run_inside("legacy")
    run_inside("isolated")
    print(failing("ListPorts", 9), flush=True)
"""


def test_subinterpreters(run):
    """The layer works where the main interpreter's lock is shared. In one with its own, the module says why not."""
    has_own_lock = sys.version_info >= (3, 12)
    isolated = "module _libqdp does not support loading in subinterpreters\n" if has_own_lock else NINE
    assert run(SUBINTERPRETERS) == (0, 2 * NINE + isolated + NINE, "")
