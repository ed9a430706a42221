"""Random command lines: whatever they are, they end with an exit code of ours, and a line that says why."""

import io
import os
import random
import types

import pytest

from qdp.aliases import Aliases
from qdp.call import _rows_by_name
from qdp.cli import check, load, object_names
from qdp.cli._declare import Read
from qdp.exporter import main as exporter
from qdp.exporter.source import Reading
from qdp.methods import __dict__ as methods
from qdp.snapshot import lines, reading, write

OBJECTS = object_names()
LINES, ALWAYS = 20000, 400  # in the long part of the tests, and in each run
A_TEST = 200  # so many lines a test, each on a host as it begins

WORDS = (
    "0 1 2 3 15 16 -1 99 4095 65536 4294967295 4294967296 18446744073709551616 -9223372036854775809 0x1f 1.5 nan inf "
    "1e400 "
    "dvs-production dvs-storage portset-0 nosuch vnic0 02:00:5e:10:00:01 02-00-5E-10-00-01 0200.5e10.0301 ff 10.0.0.1 "
    "2001:db8::1 ::ffff:1.2.3.4 flow-info index=1 index=1-3 key=value mac=02:00:5e:10:00:01 address=10.0.0.1 vlan=1 "
    "flow-timeout dvs-production/burst-size dvs-production/port/3/lro on off none cpu a/b/c device/nic0/affinity "
    "() (0,1) [] {} None True {'enabled':True} '' (((((( \\ ' \" ~ = > < show set add del lif vlan pf * ? [ [a"
).split() + ["", " ", "\t", "\n", "\x00", "\x1b[2J", "süd", "\udcff", "-", "--", "x" * 5000, "(" * 300]
OPTIONS = (
    "-j -p --json --pretty --columns --sort --where --no-header -d -s --count --delta -n -y --dry-run --yes --help -h "
    "--vlan --lcore --src --dst --queues --filter --queue --direction --top --first --entries --all --flag --port "
    "--value --source-port --rep-port --lif-type --flow-key-type --mux-pf --nosuch -x -jp "
    "--only --interval --timeout --flows --anonymize --key-file --of --capture-of "
    "--listen --textfile --include --exclude --max-series --from"
).split()
# None of these may be a file of the machine's: the tests may run as root.
FILES = ["host.qdp", "damaged.qdp", "now", "nosuch.qdp", ".", "fifo", "/nowhere/x", "made.qdp"]
OF_FILES = ("snapshot", "bundle", "diff")
VALUES = {
    "--columns": ["port", "switch,name", "", ",", "nosuch", "rx-pkts,tx-pkts"],
    "--sort": ["-port", "port", "", "-", "nosuch", "-rx-pkts"],
    "--only": ["settings", "inventory,counters", "", ",", "nosuch"],
    "--of": FILES,
    "--capture-of": FILES,
    "--key-file": ["key", "/nowhere/key", "."],
    "--listen": ["127.0.0.1:0", "here", ":1", "[::1]:99999", "a:b:c"],
    "--textfile": [".", "/nowhere", "host.qdp", ""],
    "--include": ["/VNIC$", "(", "", "(a*)*b"],
    "--where": ["port=1", "port>1", "client~(", "client~VN", "=", "nosuch=1", "rx-pkts>=nan", "~", "name~" + "(" * 200],
}


def line_of(dice):
    if dice.random() < 0.02:
        return [dice.choice(WORDS) for _ in range(dice.randrange(4))]
    name = dice.choice(OBJECTS)
    thing = load(name)
    words = [name]
    verb = dice.choice(list(thing.verbs.values()))
    if dice.random() < 0.95:
        words += verb.name.split()
    if name == "call" and dice.random() < 0.9:
        words.append(dice.choice([each for each in methods if each[0].isupper()]))
    for _ in range(dice.choice([0, 1, 1, 2, 2, 3, 5])):
        words.append(dice.choice(FILES if name in OF_FILES and dice.random() < 0.9 else WORDS))
    for _ in range(dice.choice([0, 0, 1, 2, 4])):
        option = dice.choice(OPTIONS)
        words.append(option)
        if option in VALUES or dice.random() < 0.4:
            words.append(dice.choice(VALUES.get(option, WORDS)))
    if isinstance(verb, Read) and dice.random() < 0.1:
        words += ["-w", "0.001", "--count", "1"]
    if verb.name == "try":
        words += ["--for", "0.001"]
    if dice.random() < 0.05:
        words = ["--from", dice.choice(FILES)] + words
    return words


@pytest.fixture
def bounded(host, monkeypatch, tmp_path):
    """What starts processes, serves or sleeps is done in this process, or not at all. The folder has files of hosts."""

    def read(path, options=None, progress=None):
        with write.replacing(path) as sink:
            sink.write(lines.dumped(write.head(options or write.Options())))
            reading.read(sink.write, [(1, "switches"), (1, "lcores"), (2, "lcores")], 0, 0, 1)

    monkeypatch.chdir(tmp_path)
    monkeypatch.setattr(write, "write", read)
    monkeypatch.setattr(exporter, "serve", lambda address, options: None)
    monkeypatch.setattr(exporter, "_source", lambda options: types.SimpleNamespace(
        read=lambda seconds: Reading(), restarts=0, close=lambda: None))  # fmt: skip
    monkeypatch.setattr(check, "time", types.SimpleNamespace(sleep=lambda seconds: None))
    os.mkfifo("fifo")
    read("host.qdp")
    with open("host.qdp", "rb") as file, open("damaged.qdp", "wb") as damaged:
        damaged.write(file.read()[:-50])


SEEDS = [pytest.param(i, marks=[pytest.mark.long] * (i >= ALWAYS // A_TEST)) for i in range(LINES // A_TEST)]


@pytest.mark.parametrize("seed", SEEDS)
def test_random_lines(qdp_command, monkeypatch, bounded, seed):
    rows = dict(_rows_by_name)
    dice = random.Random(seed)
    codes = set()
    for _ in range(A_TEST):
        line = line_of(dice)
        monkeypatch.setattr("sys.stdin", io.StringIO(dice.choice(["", "keep\n", '{"flow-timeout": 3}', "{", "[]"])))
        code, out, err = qdp_command(*line)
        _rows_by_name.update(rows)  # a snapshot has answered in the module's place
        Aliases.known = None
        codes.add(code)
        assert code in (0, 1, 2, 3), (line, code)
        assert "Traceback" not in err and "internal error" not in err, (line, err)
        assert code in (0, 3) or err.startswith(("qdp: ", '{"error": ')), (line, code, err)
        assert code in (0, 3) or err.endswith("\n"), (line, err)
    assert codes >= {0, 1, 2}
