"""The command on a terminal: a pseudo-terminal of a given size, which the tests read, type on, resize and close."""

import fcntl
import os
import pty
import re
import select
import signal
import struct
import termios
import time

import pytest

BOLD = re.compile("\033\\[[01]m")
NARROW = "\033\\[1m[^\n\033]{1,40}\033\\[0m\n[^\033]*more lines\n"  # a frame whose headings fit 40 columns


class Terminal:
    """A process on a pseudo-terminal that is its controlling one."""

    def __init__(self, line, environment, columns, lines=24):
        self.pid, self.master = pty.fork()
        if self.pid == 0:
            try:
                signal.signal(signal.SIGINT, signal.SIG_DFL)
                time.sleep(0.05)  # until it has its size
                os.execve(line[0], line, environment)
            finally:
                os._exit(127)
        self.resize(columns, lines)
        self.text = ""
        self.code = None

    def resize(self, columns, lines=24):
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))

    def type(self, text):
        os.write(self.master, text.encode())

    def read_until(self, pattern=None, timeout=60):
        """Reads until a pattern, or to the end; what was read since the last one."""
        start, end = len(self.text), time.monotonic() + timeout
        while pattern is None or not re.search(pattern, self.text[start:]):
            assert time.monotonic() < end, self.text
            if not select.select([self.master], [], [], 1)[0]:
                continue
            try:
                some = os.read(self.master, 65536)
            except OSError:
                some = b""
            if not some:
                assert pattern is None, self.text
                break
            self.text += some.decode().replace("\r\n", "\n")
        return self.text[start:]

    def end(self):
        """The exit code, or minus the signal."""
        if self.code is None:
            self.code = os.waitpid(self.pid, 0)[1]
            os.close(self.master)
        return os.WEXITSTATUS(self.code) if os.WIFEXITED(self.code) else -os.WTERMSIG(self.code)


@pytest.fixture
def terminal(process):
    started = []

    def terminal(*arguments, columns=80, lines=24, **variables):
        line, environment = process(*arguments, TERM="xterm", **variables)
        started.append(Terminal(line, environment, columns, lines))
        return started[-1]

    yield terminal
    for each in started:
        if each.code is None:
            os.kill(each.pid, signal.SIGKILL)
            each.end()


HEADS = {
    40: ["switch", "port", "client", "mac"],
    80: ["switch", "port", "client", "mac", "macs", "tx-lcores", "rx-lcores"],
    200: ["switch", "port", "client", "mac", "macs", "tx-lcores", "rx-lcores"],
}


@pytest.mark.parametrize("columns", HEADS)
def test_table_fits_the_terminal(terminal, run_process, columns):
    shown = terminal("port", "show", "0", columns=columns)
    lines = BOLD.sub("", shown.read_until()).splitlines()
    assert shown.end() == 0
    assert lines[0].split() == HEADS[columns]
    assert max(map(len, lines)) <= columns
    # The same rows as in a pipe; what is shown of them is whole.
    whole = run_process("port", "show", "0").stdout.splitlines()
    assert len(lines) == len(whole) > 30
    if columns >= 80:
        assert lines == whole
    else:
        assert [line.split() for line in lines] == [line.split()[: len(HEADS[columns])] for line in whole]


@pytest.mark.parametrize("columns", [40, 80, 200])
def test_counters_are_never_cut(terminal, columns):
    shown = terminal("port", "stats", "1", columns=columns)
    lines = BOLD.sub("", shown.read_until()).splitlines()
    assert shown.end() == 0
    names = lines[0].split()
    assert names[:2] == ["switch", "port"] and max(map(len, lines)) <= columns
    assert len(names) == {40: 4, 80: 7, 200: 11}[columns]
    for line in lines[1:]:
        cells = line.split()
        assert len(cells) == len(names)
        for name, cell in zip(names, cells):
            if name != "client":
                assert re.fullmatch("[0-9]{1,3}(,[0-9]{3})*", cell)


@pytest.mark.parametrize("columns", [40, 80, 200])
@pytest.mark.parametrize(
    "words", [["uplink", "offload"], ["nic", "show"], ["mirror"], ["table", "get", "flow-info", "101"]]
)
def test_long_values_are_broken_between_words(terminal, run_process, words, columns):
    shown = terminal(*words, columns=columns)
    lines = BOLD.sub("", shown.read_until()).splitlines()
    assert shown.end() == 0
    too_long = [line for line in lines if len(line) > columns]
    assert all(len(line.split()) == 1 for line in too_long)  # a word is never cut

    def words_of(text):  # without counters, which go on
        return [word for word in text.split() if not word.replace(",", "").isdigit()]

    whole = run_process(*words).stdout
    if words != ["mirror"]:  # whose columns drop
        assert words_of(" ".join(lines)) == words_of(whole)


def test_columns_that_are_named_are_all_shown(terminal):
    shown = terminal("port", "stats", "1", "--columns", "port,tx-pkts,tx-bytes,rx-pkts,rx-bytes", columns=40)
    head = BOLD.sub("", shown.read_until()).splitlines()[0]
    assert head.split() == ["port", "tx-pkts", "tx-bytes", "rx-pkts", "rx-bytes"] and len(head) > 40


@pytest.mark.parametrize("variables, is_bold", [({}, True), ({"NO_COLOR": "1"}, False)])
def test_headings_are_bold_unless_no_color(terminal, variables, is_bold):
    assert ("\033[1mswitch" in terminal("switch", **variables).read_until()) == is_bold


def test_watch_redraws_and_fits_after_a_resize_and_ends_quietly(terminal):
    shown = terminal("port", "stats", "0", "-w", "0.2", columns=120, lines=12)
    frame = shown.read_until("more lines\n")
    assert "\033[H\033[J" in frame and "tx-errors/s" in frame
    assert frame[frame.index("\033[J") :].count("\n") <= 11
    shown.resize(40, 12)
    narrow = shown.read_until(NARROW)
    last = BOLD.sub("", narrow[narrow.rindex("\033[J") + 3 :]).splitlines()
    assert max(map(len, last)) <= 40
    shown.type("\x03")
    rest = shown.read_until()
    assert shown.end() == 130
    assert "Traceback" not in rest


def test_resize_redraws_at_once(terminal):
    shown = terminal("port", "stats", "0", "-w", "50", columns=120, lines=12)
    shown.read_until("more lines\n")
    shown.resize(40, 12)
    assert "frame 1," in shown.read_until(NARROW)
    shown.type("\x03")
    shown.read_until()
    assert shown.end() == 130


@pytest.mark.parametrize(
    "answer, code, text", [("y\n", 0, " entries"), ("n\n", 2, "nothing was changed"), ("\x04", 2, "nothing")]
)
def test_dangerous_verb_asks(terminal, answer, code, text):
    shown = terminal("mac", "clear", "0")
    shown.read_until(r"Go on\? \[y/N\] ")
    shown.type(answer)
    assert text in shown.read_until()
    assert shown.end() == code


def test_trial_ends_with_the_terminal(terminal, process, tmp_path, root, build):
    """SIGHUP of the terminal's end reaches the trial, which sets back; the recorded calls tell."""
    import json

    capture = tmp_path / "calls"
    line, environment = process("setting", "try", "flow-timeout", "33")
    environment.update(PYTHONPATH=str(root / "host" / "python"), QDP_HOST_LIBRARIES=str(build / "host"))
    child = Terminal([line[0], "-m", "qdp_host", "run", "--capture", str(capture), *line[1:]], environment, 80)
    child.read_until("write `keep`")
    os.close(child.master)
    assert os.WEXITSTATUS(os.waitpid(child.pid, 0)[1]) == 2
    calls = map(json.loads, capture.read_text().splitlines())
    assert [each["in"][0] for each in calls if each.get("operation") == "Qdp_Set_Flow_Timeout"] == [33, 10]


def test_names_for_completion_are_kept_on_a_terminal_alone(terminal, run_process, tmp_path):
    variables = {"XDG_CACHE_HOME": str(tmp_path)}
    run_process("switch", variables=variables)
    run_process("port", variables=variables)
    assert list(tmp_path.iterdir()) == []
    for line in (["switch"], ["port", "show", "1"]):
        shown = terminal(*line, **variables)
        shown.read_until()
        assert shown.end() == 0
    assert sorted(each.name for each in (tmp_path / "qdp").iterdir()) == ["port", "switch"]
    names = (tmp_path / "qdp" / "switch").read_text().split()
    assert names == ["0", "1", "2", "dvs-production", "dvs-storage", "portset-0", "dvs-storage", "switch-smartnic"]
    assert (tmp_path / "qdp" / "port").read_text().split() == list("01234567")


def test_progress_after_a_second_on_standard_error(monkeypatch, capsys):
    from qdp.cli import _output

    class Stream:
        def __init__(self):
            self.text = ""

        def isatty(self):
            return True

        def write(self, text):
            self.text += text

        def flush(self):
            pass

    now = [100.0]
    stream = Stream()
    monkeypatch.setattr(time, "monotonic", lambda: now[0])
    monkeypatch.setattr("sys.stderr", stream)
    _output.clear_progress()
    _output.progress("one")
    now[0] += 0.9
    _output.progress("two")
    assert stream.text == ""
    now[0] += 0.2
    _output.progress("three")
    assert stream.text == "\r\033[Kthree"
    _output.clear_progress()
    assert stream.text == "\r\033[Kthree\r\033[K"
    _output.progress("four")
    assert stream.text.endswith("\033[K")
