"""What script/build says of its steps."""

import os
import pty
import shutil
import socket
import subprocess

import pytest

STEPS = (
    "Configuring build/release\n"
    "Building build/release; the first time takes a minute or more\n"
    "Built build/release\n"
)
PROJECT = """\
cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES NONE)
add_custom_target(all_of_it ALL COMMAND ${CMAKE_COMMAND} -E touch made)
"""


@pytest.fixture
def project(root, tmp_path):
    """A project that is quickly built, with the script."""
    (tmp_path / "script").mkdir()
    for name in ("build", "common"):
        shutil.copy(root / "script" / name, tmp_path / "script")
    shutil.copy(root / "CMakePresets.json", tmp_path)
    (tmp_path / "CMakeLists.txt").write_text(PROJECT)
    return tmp_path


def build(project, **streams):
    streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
    return subprocess.run([project / "script" / "build"], text=True, timeout=60, **streams)


def test_the_first_build_says_its_steps_where_no_terminal_is(project):
    done = build(project)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", STEPS)
    assert (project / "build" / "release" / "made").exists()


def test_a_further_build_is_silent(project):
    build(project)
    done = build(project)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")


def test_a_build_behind_one_that_did_not_end_says_its_steps(project):
    (project / "CMakeLists.txt").write_text(PROJECT.replace("-E touch made", "-E false"))
    build(project)
    (project / "CMakeLists.txt").write_text(PROJECT)
    assert build(project).stderr == STEPS
    assert build(project).stderr == ""


def test_a_terminal_shows_the_tools_own_progress(project):
    terminal, end = pty.openpty()
    done = build(project, stdout=end)
    os.close(end)
    shown = os.read(terminal, 65536).decode()
    os.close(terminal)
    assert (done.returncode, done.stderr) == (0, "") and "touch made" in shown


def test_a_build_that_fails_says_why_and_where(project):
    (project / "CMakeLists.txt").write_text(PROJECT.replace("-E touch made", "-E false"))
    done = build(project)
    assert done.returncode == 1
    assert done.stderr.startswith(STEPS.rpartition("Built")[0])
    assert done.stderr.endswith("build: could not build build/release\n")


def test_steps_reach_a_socket(project):
    ours, theirs = socket.socketpair()
    done = build(project, stderr=theirs)
    theirs.close()
    with ours, ours.makefile() as told:
        assert (done.returncode, told.read()) == (0, STEPS)


def test_builds_of_one_folder_wait_for_each_other(project):
    alone = "sh -c 'mkdir running && sleep 0.2 && rmdir running'"
    (project / "CMakeLists.txt").write_text(PROJECT.replace("${CMAKE_COMMAND} -E touch made", alone))
    command = [project / "script" / "build"]
    builds = [subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True) for _ in range(3)]
    told = [each.communicate(timeout=60)[0] for each in builds]
    assert [each.returncode for each in builds] == [0, 0, 0], told
