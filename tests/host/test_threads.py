"""The embedded host among threads, after a fork, and with answers that break their rules."""

import os
import subprocess
import sys

import pytest

from host.command import started


@pytest.fixture(scope="module")
def run_program(build):
    """Runs tests/host/host_threads.cpp, which is built under ThreadSanitizer when it is first needed."""
    if build.name in ("sanitize", "coverage"):
        pytest.skip("ThreadSanitizer excludes the other sanitizers")
    subprocess.run(
        ["cmake", "--build", build, "--target", "host_threads"], stdout=subprocess.DEVNULL, check=True, timeout=600
    )

    def run(*arguments):
        command = [build / "tests" / "host_threads", *arguments]
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=120)
        return done.returncode, done.stdout, done.stderr

    return run


def test_loads_restores_and_calls_of_threads_do_not_race(run_program):
    assert run_program("threads", "3") == (0, "8 threads, each at work\n", "")


def test_clients_of_a_served_host_do_not_race(run_program, tmp_path):
    assert run_program("share", str(tmp_path / "socket")) == (0, "served\n", "")


def test_callback_of_a_walk_may_replace_the_host(run_program):
    # The default host has three switches of the datapath, and one without.
    assert run_program("load-during-walk") == (0, "4\n", "")


def test_answer_with_wrong_number_of_arguments_aborts(run_program):
    message = "qdp-host: the answer of Qdp_Init_Mbuf_Fastslabs takes 2 arguments instead of 0\n"
    assert run_program("wrong-count") == (-6, "", message)


def test_answer_of_an_unknown_operation_aborts(run_program):
    message = "qdp-host: Qdp_Nothing has an answer, and no line in the table of operations\n"
    assert run_program("unknown-operation") == (-6, "", message)


def test_exception_in_an_answer_is_reported(run_program):
    message = "qdp-host: Qdp_Init_Mbuf_Fastslabs: the answer failed: a lack of slabs\n"
    assert run_program("throwing") == (0, "bad0001\n", message)


# Threads keep stand-ins busy while children are forked, each of which calls once more.
FORKS = """
import ctypes, os, sys, threading
from qdp_host import EmbeddedHost
host = EmbeddedHost()
host.load("default")
free = ctypes.CDLL({library!r})    # calls without the interpreter lock
def busy():
    while not is_over:
        free.Qdp_Get_Port_List(0, ctypes.create_string_buffer(65536), ctypes.byref(ctypes.c_uint32(65536)))
is_over = False
threads = [threading.Thread(target=busy) for _ in range(3)]
for thread in threads:
    thread.start()
for _ in range(40):
    child = os.fork()
    if child == 0:
        os._exit(free.Qdp_Get_Flow_Timeout(ctypes.byref(ctypes.c_uint32())))
    assert os.waitpid(child, 0)[1] == 0
is_over = True
for thread in threads:
    thread.join()
print("done")
"""


def run_forks(build, **variables):
    code = FORKS.format(library=str(build / "host" / "libqdp.so") if not variables else None)
    return started([sys.executable, "-c", code], build, variables=variables)


def test_child_of_a_fork_during_calls_can_call(build):
    done = run_forks(build)
    assert (done.returncode, done.stdout, done.stderr) == (0, "done\n", "")


def test_child_of_a_fork_during_recorded_calls_can_call(build, tmp_path):
    shim = " ".join(filter(None, [os.environ.get("LD_PRELOAD"), str(build / "host" / "libqdpcapture.so")]))
    done = run_forks(build, LD_PRELOAD=shim, QDP_HOST_CAPTURE=str(tmp_path / "capture"))
    assert (done.returncode, done.stdout, done.stderr) == (0, "done\n", "")
