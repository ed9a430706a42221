"""The example that prints how well the offload of flows works."""

import re

import _libqdp

HOUR = 3600
SETTINGS = {"enabled": 1, "geneveCritical": 0, "ipDiscoveryDHCP": 1, "ipDiscoveryICMP6ND": 0}

# An lcore has 20,000 hits a second and 500 more by its number.
STORAGE = """\
Offload of switch 1, dvs-storage, over 1 s
  uplink  flows  capacity  models  trouble
       0      0         0  None    none
       1      0         0  None    none
  lcore  hits/s  trouble
      8  24,000  none
      9  24,500  none
     10  25,000  none
     11  25,500  none
"""


def test_text(printed):
    assert printed("offload_health.py", "--switch", "1") == STORAGE


def test_the_lcore_with_trouble(printed):
    """Of 40 connections a second that fail, half have a wrong mark and a quarter a wrong NIC."""
    lines = printed("offload_health.py", "--switch", "0").splitlines()
    table = lines[lines.index("  lcore  hits/s  trouble") + 1 :]
    assert [line.split()[0] for line in table if not line.endswith("  none")] == ["5"]
    assert table[5] == "      5  22,500  markMismatched 20, pnicMismatched 10, ctHwContextFailed 40"


def test_uplinks_in_text(printed):
    """Uplink 1 has 43 flows a second, of which one in 700 fails to be validated, and so on."""
    lines = printed("offload_health.py", "--switch", "0", "--interval", "100").splitlines()
    before, after = 43 * HOUR, 43 * (HOUR + 100)
    calls = {
        **{"ringFull": 5000, "creationFull": 9000, "numFailedValidateCalls": 700, "numFailedCreateCalls": 1000},
        **{"numFailedDestroyCalls": 4000, "numFailedQueryCalls": 3000},
        **{"numFailedBulkResAllocCalls": 20000, "numFailedCreateCtxCalls": 2000},
    }
    grown = {name: after // share - before // share for name, share in calls.items()}
    trouble = ", ".join(f"{name} {count}" for name, count in grown.items() if count)
    assert "numFailedCreateCalls 5, " in trouble  # 159,100 calls in all, after 154,800
    cells = ["1", "1,231", "65,536", "Model 1 Level 1, Model 1 Level 2, Model 2A", trouble]
    assert re.split("  +", lines[3].strip()) == cells


def test_json(frozen, rows):
    array = rows("offload_health.py", "--interval", "10")
    counts = [(row["swID"], len(row["uplinks"]), len(row["lcores"])) for row in array]
    assert counts == [(0, 2, 8), (1, 2, 4), (2, 2, 4)]
    before = {(s, p): _libqdp.GetFPOUplinkStats(s, p) for s in range(3) for p in range(2)}
    lcores = {each["lcoreID"]: each for each in _libqdp.GetFPOStats(0, tuple(range(8)))}
    frozen.advance(10)
    for row in array:
        for uplink in row["uplinks"]:
            trouble, port = uplink.pop("trouble"), uplink.pop("portID")
            assert uplink == _libqdp.GetFPOUplinkStatus(row["swID"], port)
            old, new = before[row["swID"], port], _libqdp.GetFPOUplinkStats(row["swID"], port)
            grown = {key for key in new if new[key] != old[key]}
            assert {key: new[key] - old[key] for key in grown if re.search("Failed|Full", key)} == trouble
    for lcore, new in zip(array[0]["lcores"], _libqdp.GetFPOStats(0, tuple(range(8)))):
        old = lcores[lcore["lcoreID"]]
        assert lcore["hitsPerSecond"] == (new["hits"] - old["hits"]) / 10
        assert lcore["trouble"] == {
            key: new[key] - old[key]
            for key in ("markMismatched", "pnicMismatched", "ctHwContextFailed")
            if new[key] != old[key]
        }
    assert [lcore["trouble"].get("ctHwContextFailed") for lcore in array[0]["lcores"]] == [None] * 5 + [400, None, None]


def test_a_counter_that_wraps_at_32_bits(rows):
    """Lcore 8 has 24,000 hits a second: 23,296 less than 2^32 after 178,956 seconds, and 704 more a second later."""
    assert 24_000 * 178_956 + 23_296 == 2**32
    (row,) = rows("offload_health.py", "--switch", "1", prepare=f"host.advance(178_956 - {HOUR})")
    assert row["lcores"][0]["hitsPerSecond"] == 24_000


def test_counters_of_trouble_that_wrap(rows):
    """The mismatches wrap at 32 bits, the failed contexts of the same answer do not."""
    prepare = """
import _libqdp
readings = [(2**32 - 1, 5), (3, 2**32 + 7)]
def stats(switch, lcores):
    marks, contexts = readings.pop(0)
    return [{"lcoreID": 8, "hits": 0, "markMismatched": marks, "pnicMismatched": 0, "ctHwContextFailed": contexts}]
_libqdp.GetFPOStats = stats
"""
    (row,) = rows("offload_health.py", "--switch", "1", prepare=prepare)
    assert row["lcores"] == [
        {"lcoreID": 8, "hitsPerSecond": 0, "trouble": {"markMismatched": 4, "ctHwContextFailed": 2**32 + 2}}
    ]


def test_settings_of_an_alias(printed, rows):
    # What is allowed by default, model 1 alone, is that of a host whose kernel is older than 7.0.0.
    setting, _ = rows("offload_health.py", "--alias", "dvs-storage", "--switch", "1")
    models = setting["fpo"].pop("models")
    assert setting == {"alias": "dvs-storage", "fpo": SETTINGS, "offloadFlows": False}
    text = printed("offload_health.py", "--alias", "dvs-storage", "--switch", "1")
    assert text == (
        "Settings of dvs-storage: offloadFlows False, enabled 1, geneveCritical 0, ipDiscoveryDHCP 1, "
        f"ipDiscoveryICMP6ND 0, models {models}\n\n{STORAGE}"
    )


def test_an_alias_that_there_is_not(run):
    done = run("offload_health.py", "--alias", "dvs-other", "--switch", "1")
    assert done.returncode == 2
    listed = "0 (portset-0), 1 (dvs-storage), 2 (switch-smartnic)"
    assert done.stderr == f"offload_health.py: no switch dvs-other; it has {listed}\n"
    assert done.stdout == STORAGE


def test_a_configuration_that_cannot_be_loaded(run):
    options = ["--alias", "dvs-storage", "--switch", "1"]
    done = run("offload_health.py", *options, prepare="host.fail('DVSState_ConfigReset', status=7, times=0)")
    assert done.returncode == 2
    said = "LibraryInit: status 0x7; the switch configuration cannot be read"
    assert done.stderr == f"offload_health.py: {said}\n"
    assert done.stdout == STORAGE


def test_an_uplink_whose_counters_are_refused(run, refused):
    done = run("offload_health.py", "--switch", "0", prepare="host.fail('Qdp_Get_FPO_Uplink_Stats', nth=2)")
    assert done.returncode == 2
    assert done.stderr == refused("offload_health.py", "GetFPOUplinkStats(0, 1)", "Failed to get FPO uplink stats")
    assert [line.split()[0] for line in done.stdout.splitlines()[2:4]] == ["0", "lcore"]


def test_more_lcores_than_an_answer_holds(run):
    """They are asked for in two parts."""
    prepare = """
import _libqdp
asked = []
(switch, *_) = _libqdp.ListSwitches()
_libqdp.ListSwitches = lambda: [dict(switch, lcores=(1 << 40) - 1)]
def stats(switch, lcores):
    asked.append(len(lcores))
    return [{"lcoreID": lcore, "hits": 0} for lcore in lcores]
_libqdp.GetFPOStats = stats
import atexit
atexit.register(lambda: print(asked, file=sys.stderr))
"""
    done = run("offload_health.py", prepare=prepare)
    assert (done.returncode, done.stderr) == (0, "[32, 8, 32, 8]\n")
    assert done.stdout.count("       0  none") == 40
