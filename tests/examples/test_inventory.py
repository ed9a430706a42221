"""The example that prints the host's switches and ports."""

import _libqdp

STORAGE = """\
Switches
  switch  name          MTU  ports  active  lcores
       1  dvs-storage  1500      8       8       4

Ports of switch 1, dvs-storage
  port  client   MAC address        MACs  TX queues on lcores  RX queues on lcores
     0  UPLINK   02:10:00:01:00:00     0  0 1 2 3 0 1 2 3      0 2 0 2 0 2 0 2
     1  UPLINK   02:10:00:01:00:01     0  1 2 3 0 1 2 3 0      1 3 1 3 1 3 1 3
     2  VNIC     02:10:00:01:00:02     1  2                    2
     3  VNIC     02:10:00:01:00:03     1  3 0                  3 1
     4  VNIC     02:10:00:01:00:04     1  0 1 2                0 2 0
     5  VNIC     02:10:00:01:00:05     1  1 2 3 0              1 3 1 3
     6  VNIC.PT  02:10:00:01:00:06     1  2                    2 0 2 0 2
     7  VNIC     02:10:00:01:00:07     1  3 0                  3 1 3 1 3 1
"""


def test_a_switch(printed):
    assert printed("inventory.py", "--switch", "1") == STORAGE


def test_all_switches(printed):
    first, *blocks = [block.splitlines() for block in printed("inventory.py").split("\n\n")]
    assert first == [
        "Switches",
        "  switch  name              MTU  ports  active  lcores",
        "       0  portset-0        9000     36      36       8",
        "       1  dvs-storage      1500      8       8       4",
        "       2  switch-smartnic  1500     35      35       4",
    ]
    assert [(block[0].split(",")[0], len(block) - 2) for block in blocks] == [
        ("Ports of switch 0", 36),
        ("Ports of switch 1", 8),
        ("Ports of switch 2", 35),
    ]
    assert blocks[2][-1].split()[-2:] == ["-", "-"]  # a port without queues


def test_json(frozen, rows):
    assert rows("inventory.py") == [
        dict(switch, ports=_libqdp.ListPorts(switch["swID"])) for switch in _libqdp.ListSwitches()
    ]


def test_ports_that_are_refused_are_missed_by_their_switch_alone(run):
    done = run("inventory.py", prepare="host.fail('Qdp_Get_Port_List', nth=2)")
    assert done.returncode == 2
    assert done.stderr == (
        "inventory.py: ListPorts(1): Failed to retrieve list of ports; check the switch number against ListSwitches\n"
    )
    assert [len(block.splitlines()) for block in done.stdout.split("\n\n")] == [5, 2 + 36, 2, 2 + 35]
