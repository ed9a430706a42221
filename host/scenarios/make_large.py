#!/usr/bin/env python3
"""Makes large.json, the scenario of a very large host: 16 switches, 16384 ports on the first, its MAC table of 65536
entries, and a million flows.

    host/scenarios/make_large.py [--flows N] [--seed N] [FILE]
"""

import argparse
import json
import pathlib
import random

SWITCHES = 16
PORTS = 16384  # of the first switch; the most that a switch can have
MACS = 65536  # of the first switch; the most that a switch can have
LCORES_OF_A_SWITCH = 4
UPLINKS = 4
SERVICES = [
    ("tcp", 443),
    ("tcp", 80),
    ("udp", 53),
    ("tcp", 5432),
    ("udp", 4789),
    ("tcp", 22),
    ("udp", 123),
    ("tcp", 8443),
]


def stepped(start, step=1, modulo=None):
    return {"from": start, "step": step} | ({"modulo": modulo} if modulo else {})


def traffic(rng):
    return {
        "packets": stepped(rng.randrange(100, 2000), rng.randrange(1, 40), 5000),
        "packetBytes": rng.randrange(64, 1400),
    }


def switch(rng, number):
    vnics = (PORTS if number == 0 else rng.randrange(64, 1024)) - UPLINKS
    made = {
        "alias": f"dvs-{number:02}",
        "mtu": rng.choice([1500, 9000]),
        "ports": [
            {"repeat": UPLINKS, "name": f"nic{{{number * UPLINKS}}}", "client": "UPLINK", "txQueues": 8, "rxQueues": 8},
            {"repeat": vnics, "name": "vnic{0}", "txQueues": 2, "rxQueues": 2, "tx": traffic(rng), "rx": traffic(rng)},
        ],
        "features": {"nic": {"models": ["Model 1 Level 1", "Model 2A"]}} if rng.random() < 0.5 else {},
    }
    if number == 0:
        mac = {
            "repeat": MACS,
            "port": stepped(0, 1, PORTS),
            "mac": stepped("02:20:00:00:00:00"),
            "vlan": stepped(1, 1, 4000),
        }
        made["macTable"] = {"limit": MACS, "portLimit": PORTS, "macs": [mac]}
    return made, vnics + UPLINKS


def flows(rng, number, ports, count):
    """Flows of a switch, spread over its lcores; a part of them each service."""
    first_lcore = number * LCORES_OF_A_SWITCH
    return {
        "repeat": count,
        "lcore": stepped(first_lcore, 1, LCORES_OF_A_SWITCH),
        "inputPort": stepped(0, 1, ports),
        "outputPort": stepped(0, rng.randrange(3, 60, 2), ports),
        "source": stepped(f"10.{number}.0.1", rng.randrange(1, 200, 2), 65000),
        "destination": stepped(f"10.{128 + number}.0.1", rng.randrange(1, 200, 2), 65000),
        "sourcePort": stepped(32768, rng.randrange(1, 500, 2), 28000),
        "packets": stepped(1, rng.randrange(1, 50), 900),
        "packetBytes": stepped(64, rng.randrange(1, 50), 1400),
        "actions": ["destinationPort"],
        "turns": [{"protocol": protocol, "destinationPort": port} for protocol, port in rng.sample(SERVICES, 4)],
    }


def large(seed, num_flows):
    rng = random.Random(seed)
    made = [switch(rng, number) for number in range(SWITCHES)]
    shares = [num_flows // SWITCHES + (number < num_flows % SWITCHES) for number in range(SWITCHES)]
    return {
        "$schema": "schema.json",
        "comment": f"Made by make_large.py with seed {seed}.",
        "switches": [each for each, _ in made],
        "flows": [
            flows(rng, number, ports, share) for number, ((_, ports), share) in enumerate(zip(made, shares)) if share
        ],
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument(
        "file",
        nargs="?",
        default=pathlib.Path(__file__).with_name("large.json"),
        help="instead of large.json beside this script",
    )
    parser.add_argument("--flows", type=int, default=1_000_000, help="how many flows (default: %(default)s)")
    parser.add_argument("--seed", type=int, default=1, help="what the choices follow from (default: %(default)s)")
    arguments = parser.parse_args()
    text = json.dumps(large(arguments.seed, arguments.flows), indent=1) + "\n"
    pathlib.Path(arguments.file).write_text(text)


if __name__ == "__main__":
    main()
