"""Test of the systemd unit: what it starts exists, and it is hardened."""

import re
import shutil
import subprocess

import pytest

UNIT = "package/systemd/qdp-exporter.service"
MOST_EXPOSURE = 3.0


def test_unit_starts_the_command_with_its_default_address(root):
    from qdp.cli.exporter import DEFAULT_LISTEN

    text = (root / UNIT).read_text()
    assert re.search(r"^ExecStart=(.*)$", text, re.MULTILINE)[1] == "/usr/bin/qdp exporter --listen " + DEFAULT_LISTEN


@pytest.mark.skipif(not shutil.which("systemd-analyze"), reason="there is no systemd on this machine")
def test_unit_is_hardened(root):
    done = subprocess.run(
        ["systemd-analyze", "security", "--offline=yes", str(root / UNIT)],
        stdout=subprocess.PIPE,
        universal_newlines=True,
    )
    assert float(re.search(r"Overall exposure level for \S+: ([\d.]+)", done.stdout)[1]) <= MOST_EXPOSURE
