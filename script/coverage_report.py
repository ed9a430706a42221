"""Prints which share of the lines and branches of src/ the tests reach, from gcovr's JSON, and lists what they do not.
What cannot be reached is justified in script/unreachable.toml, by the text of its line; such a line counts as
reached."""

import json
import pathlib
import sys
import tomllib

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIST = ROOT / "script" / "unreachable.toml"
MOST_ENTRIES = 10


def lines_of(file):
    """(number, text, are the line and each of its branches reached) of each line that has code."""
    texts = (ROOT / file["file"]).read_text().splitlines()
    for line in file["lines"]:
        if not line["gcovr/noncode"]:
            reached = [line["count"] > 0, *(branch["count"] > 0 for branch in line["branches"])]
            yield line["line_number"], texts[line["line_number"] - 1].strip(), reached


def share(reached):
    return f"{100 * sum(reached) / len(reached):6.1f} %" if reached else "       -"


def main():
    justified = {(each["file"], each["line"]): each["why"] for each in tomllib.loads(LIST.read_text())["unreachable"]}
    unused, missing = set(justified), []
    all_lines, all_branches = [], []
    print(f"{'file':56}{'lines':>8}{'branches':>10}")
    for file in sorted(json.load(sys.stdin)["files"], key=lambda each: each["file"]):
        lines, branches = [], []
        for number, text, reached in lines_of(file):
            entry = file["file"], text
            if not all(reached) and entry in justified:
                unused.discard(entry)
                reached = [True] * len(reached)
            if not all(reached):
                what = "line" if not reached[0] else "a branch"
                missing.append(f"{file['file']}:{number}  {what} is not reached: {text}")
            lines.append(reached[0])
            branches += reached[1:]
        print(f"{file['file']:56}{share(lines)}  {share(branches)}")
        all_lines += lines
        all_branches += branches

    for text in missing:
        print(text)
    for (path, line), why in justified.items():
        print(f"{path}: justified: {line}\n    {why}")
    for path, line in sorted(unused):
        print(f"{LIST.name}: is reached, or gone: {path}: {line}")
    if len(justified) > MOST_ENTRIES:
        print(f"{LIST.name}: {len(justified)} entries are more than {MOST_ENTRIES}")
    lines = f"lines {share(all_lines).strip()} of {len(all_lines)}"
    print(f"{lines}, branches {share(all_branches).strip()} of {len(all_branches)}")
    sys.exit(bool(missing or unused or len(justified) > MOST_ENTRIES or not all_lines))


main()
