#!/usr/bin/env python3
"""Makes schema.json, beside this script, from the descriptions in host/scenario/, which it builds first."""

import pathlib
import subprocess

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
PROGRAM = "scenario_schema"


def main():
    subprocess.run([ROOT / "script" / "build", f"release:{PROGRAM}"], check=True)
    made = subprocess.run([ROOT / "build" / "release" / "host" / PROGRAM], stdout=subprocess.PIPE, check=True)
    (HERE / "schema.json").write_bytes(made.stdout)


if __name__ == "__main__":
    main()
