"""The example that prints what the SmartNIC has lost."""

from collections import Counter

# The embedded host's model.
LIFS = 4 + 2 + 180
VLAN_PORTS = 180
LIFS_UP = LIFS - 11  # every sixteenth is down: 31, 47 and so on until 191; only what is up has traffic
PORTS_UP = LIFS_UP + VLAN_PORTS
HOUR = 3600


def by_place(array):
    return {(row["where"], row["counter"]): row["count"] for row in array}


def test_losses_of_all_places_the_highest_first(rows):
    """Port 16 receives 400 + 13 * 16 = 608 packets a second and sends 300 + 17 * 16 = 572, and so does LIF 16, whose
    port it is. A 10,000th is dropped."""
    array = rows("smartnic_drops.py")
    counts = [row["count"] for row in array]
    assert counts == sorted(counts, reverse=True) and counts[-1] > 0
    found = by_place(array)
    assert len(found) == len(array)
    assert found["ingress", "rxMalformed"] == found["egress", "drop"] == 2 * HOUR
    assert found["port 16", "rxUcastDropPkts"] == 608 * HOUR // 10_000
    assert found["LIF 16", "rxUcastDropPkts"] == found["LIF 16", "rxQueueEmpty"] == 608 * HOUR // 10_000
    assert found["LIF 16", "txDescFetchError"] == 572 * HOUR // 100_000
    places = [where.split()[0] for where in {where for where, _ in found}]
    assert Counter(places) == {"ingress": 1, "egress": 1, "LIF": LIFS_UP, "port": PORTS_UP}
    assert not {counter for _, counter in found} & {"rxFromHost", "flowMiss", "rxUcastPkts", "rxUcastDropBytes"}


def test_losses_of_an_interval(rows):
    found = rows("smartnic_drops.py", "--interval", "500")
    counts = by_place(found)
    assert counts["ingress", "rxMalformed"] == 2 * 500
    assert counts["port 16", "rxUcastDropPkts"] == 608 * (HOUR + 500) // 10_000 - 608 * HOUR // 10_000
    assert all(row["perSecond"] == row["count"] / 500 for row in found)
    assert ("LIF 31", "rxUcastDropPkts") not in counts


# 7,200 of each in an hour, at 2 a second, and half as many wrong checksums. Of 435 ports the last sends the most:
# 300 + 17 * 435 = 7,695 packets a second, of which it drops a 10,000th.
def test_text(printed):
    assert printed("smartnic_drops.py", "--top", "4") == f"""\
where     counter          count
ingress   rxMalformed      7,200
egress    drop             7,200
ingress   rxUserCsumErr    3,600
port 435  txUcastDropPkts  {7_695 * HOUR // 10_000:,}
"""


def test_a_long_text_tells_of_the_rest(printed, rows):
    losses = len(rows("smartnic_drops.py"))
    heading, *lines, rest = printed("smartnic_drops.py").splitlines()
    assert heading.startswith("where") and len(lines) == 20 < losses
    assert rest == f"and {losses - 20:,} more, which --top shows"
    assert len(printed("smartnic_drops.py", "--top", str(losses)).splitlines()) == 1 + losses
    assert len(printed("smartnic_drops.py", "--top", "21").splitlines()) == 1 + 21


def test_text_of_an_interval(printed):
    assert printed("smartnic_drops.py", "--top", "3", "--interval", "10") == """\
where    counter        count  a second
ingress  rxMalformed       20       2.0
egress   drop              20       2.0
ingress  rxUserCsumErr     10       1.0
"""


# Counters of zero: of every LIF and port, and of the pipeline.
WITHOUT_TRAFFIC = f"""
for operation, size, reads in [
    ("Qdp_Lif_Stats_Get", 384, {LIFS}),
    ("Qdp_Port_Stats_Get", 256, {LIFS + VLAN_PORTS}),
    ("Qdp_P4I_Stats_Get", 64, 1),
    ("Qdp_P4E_Stats_Get", 64, 1),
]:
    for _ in range(reads):
        host.script(operation, outputs=[bytes(size)])
"""


def test_without_losses(printed):
    assert printed("smartnic_drops.py", prepare=WITHOUT_TRAFFIC) == "where  counter  count\n"
    assert printed("smartnic_drops.py", "--json", prepare=WITHOUT_TRAFFIC) == "[]\n"


def test_a_counter_that_reads_negative(rows):
    """All counters are shown signed by the module; from 2^63 on that is wrong."""
    prepare = """
import _libqdp
egress = _libqdp.P4EStatsGet()
_libqdp.P4EStatsGet = lambda: dict(egress, drop=-5)
"""
    (first,) = rows("smartnic_drops.py", "--top", "1", prepare=prepare)
    assert first == {"where": "egress", "counter": "drop", "count": 2**64 - 5}


def test_a_lif_whose_counters_are_refused(run, refused):
    done = run("smartnic_drops.py", "--top", "9999", prepare="host.fail('Qdp_Lif_Stats_Get', nth=2)")
    assert done.returncode == 2
    assert done.stderr == refused("smartnic_drops.py", "LifStatsGet(2)", "Failed to get lif stats")
    assert "LIF 1 " in done.stdout and "LIF 3 " in done.stdout and "LIF 2 " not in done.stdout


def test_a_second_page_that_is_refused(run, refused):
    done = run("smartnic_drops.py", "--top", "9999", prepare="host.fail('Qdp_P4_Cmd', nth=2)")
    assert done.returncode == 2
    assert done.stderr == refused("smartnic_drops.py", "LifPortList(95)", "Failed to get lif port list")
    assert "LIF 94 " in done.stdout and "LIF 96 " not in done.stdout and "port 96 " in done.stdout
