"""Damaged scenarios: each is refused with one line that says where, or makes a host that can be written out again."""

import copy
import json
import random

import pytest

VALUES = [
    0,
    1,
    -1,
    255,
    65536,
    1 << 32,
    (1 << 64) - 1,
    1 << 64,
    0.5,
    1e300,
    True,
    None,
    "",
    "x",
    "02:00:00:00:00:01",
    [],
    {},
]


def places(value, found):
    """All (container, key) of a JSON value."""
    keys = value if isinstance(value, dict) else range(len(value)) if isinstance(value, list) else ()
    for key in keys:
        found.append((value, key))
        places(value[key], found)
    return found


def with_other_values(scenario, rng):
    """A scenario in which a few values are others, gone, or stand twice."""
    scenario = copy.deepcopy(scenario)
    for _ in range(rng.randrange(1, 4)):
        found = places(scenario, [])
        if not found:
            break
        container, key = rng.choice(found)
        way = rng.randrange(4)
        if way == 0:
            del container[key]
        elif way == 1 and isinstance(container, list):
            container.insert(key, copy.deepcopy(container[key]))
        elif way == 2 and isinstance(container[key], int):
            container[key] += rng.choice((-1, 1))
        else:
            container[key] = copy.deepcopy(rng.choice((*VALUES, rng.choice(found)[0])))
    return json.dumps(scenario).encode()


def with_other_bytes(content, rng):
    content = bytearray(content)
    start = rng.randrange(len(content))
    way = rng.randrange(3)
    if way == 0:
        del content[start : start + rng.randrange(1, 200)]
    elif way == 1:
        content[start:start] = content[: rng.randrange(1, 200)]
    else:
        for _ in range(rng.randrange(1, 5)):
            content[rng.randrange(len(content))] = rng.randrange(256)
    return bytes(content)


def try_damaged(root, control, folder, times):
    content = (root / "host" / "scenarios" / "mux.json").read_bytes()
    scenario = json.loads(content)
    seed = random.SystemRandom().randrange(1 << 32)
    rng = random.Random(seed)
    path = folder / "scenario.json"
    made = 0
    for i in range(times):
        damaged = with_other_values(scenario, rng) if rng.randrange(3) else with_other_bytes(content, rng)
        path.write_bytes(damaged)
        status, error = control.load(path), control.error()
        if status == 0:
            assert error is None and json.loads(control.scenario()), (seed, i)
            made += 1
        else:
            assert status == -1 and error.startswith(f"{path}: ") and "\n" not in error, (seed, i, error)
    assert times / 50 < made < times - times / 50, seed  # or the damage would be of one kind


def test_damaged_scenarios_are_refused_or_make_a_host(root, control, tmp_path):
    try_damaged(root, control, tmp_path, 100)


@pytest.mark.long
def test_ten_thousand_damaged_scenarios(root, control, tmp_path):
    try_damaged(root, control, tmp_path, 10_000)
