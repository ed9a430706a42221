"""Changes one thing at a time in the built module or, with --source, in its sources, runs the tests that concern it,
and prints the share that is noticed. What is not noticed is listed; it has to be argued for in
mutate/equivalent.toml."""

import argparse
import os
import pathlib
import random
import sys

from mutate.code import code_mutants
from mutate.image import Image
from mutate.mutants import Sources
from mutate.rebuild import Rebuild
from mutate.results import Equivalents, Results
from mutate.rows import row_mutants
from mutate.source import source_mutants
from mutate.texts import text_mutants
from mutate.trial import InMemory, try_all

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / os.environ.get("QDP_BUILD", "build/release")  # as tests/conftest.py
WORK = ROOT / "build" / "mutate"

KINDS = {
    "jumps": "each condition of a jump, a set or a move reversed",
    "bounds": "each number that is compared with, one higher and one lower",
    "rows": "each row of a field table: its offset, size, shifts, sign, key and order",
    "messages": "each text, in one character",
}
SOURCE_KINDS = {
    "formats": "each letter of a format that takes arguments, makes objects or prints numbers",
    "widths": "each integer type of a local, a member or a constant: half as wide, and of the other sign",
    "returns": "each return of a failure or an answer without content",
    "statements": "each statement that stands alone, dropped",
    "constants": "each number, one higher and one lower",
}
# What has to be noticed of all changes; every other one has to be argued for.
ENOUGH = 0.98
ENOUGH_OF_SOURCES = 0.94  # one width in four can be another: values are small, or pass with all their bits

# And of those that nobody argues for, in chosen files or kinds, and in a sample.
ENOUGH_OF_UNARGUED = 0.97
ENOUGH_OF_A_SAMPLE = 0.90
CHANCE = 2  # so many changes of a sample, more or less, are chance


def parse_arguments():
    kinds = "\n".join(f"  {kind:11}{what}" for kind, what in {**KINDS, **SOURCE_KINDS}.items())
    parser = argparse.ArgumentParser(
        prog="script/mutate",
        description=__doc__,
        epilog=f"kinds of changes:\n{kinds}",
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument("files", nargs="*", metavar="FILE", help="change only what comes from these sources")
    parser.add_argument("--source", action="store_true", help="change sources: compile one anew, link, load the result")
    parser.add_argument(
        "--kind", choices=[*KINDS, *SOURCE_KINDS], action="append", help="change only this; may be given again"
    )
    parser.add_argument("--sample", type=int, metavar="N", help="try only N by chance, of those that nobody argues for")
    parser.add_argument("--unargued", action="store_true", help="leave out what somebody argues for, as a sample does")
    parser.add_argument("--seed", type=int, help="of the choice, which is printed; another one each time without it")
    parser.add_argument("--jobs", type=int, default=1, metavar="N", help="trials at a time (default: %(default)s)")
    parser.add_argument("--afresh", action="store_true", help="forget what earlier runs of the same build found")
    return parser.parse_args()


def chosen(mutants, options):
    """The mutants to try and, of a sample, in which order."""
    files = {pathlib.Path(each).resolve().relative_to(ROOT).as_posix() for each in options.files}
    mutants = [
        each
        for each in mutants
        if (not options.kind or each.kind in options.kind) and (not files or files.intersection(each.files))
    ]
    if options.sample is None:
        return mutants
    seed = random.SystemRandom().randrange(1 << 32) if options.seed is None else options.seed
    print(f"seed {seed}", flush=True)
    return random.Random(seed).sample(mutants, len(mutants))


def share(noticed, total):
    return f"{100 * noticed / total:.1f} % ({noticed} of {total})" if total else "none tried"


def summarise(results, equivalents, is_complete, is_sample, kinds, enough):
    """Prints what was found and says whether it is good enough."""
    survivors = results.survivors()
    argued = {each: equivalents.reason(each) for each in survivors}
    for title, are_argued in (("argued", True), ("not argued", False)):
        listed = [each for each in survivors if bool(argued[each]) == are_argued]
        print(f"\n{len(listed)} not noticed, {title}" + (":" if listed else ""))
        for each in listed:
            print(f"  {each}" + (f"\n      {argued[each]}" if are_argued else f"\n      {equivalents.line(each)}"))
    unused = equivalents.unused(survivors) if is_complete else []
    for each in unused:
        print(f"mutate/equivalent.toml argues for what is noticed or gone: {each}")

    print()
    for kind in kinds:
        of_kind = results.of_kind(kind)
        print(f"{kind:11}{share(sum(of_kind), len(of_kind))}")
    total, noticed = results.total(), results.total() - len(survivors)
    print(f"noticed: {share(noticed, total)}")
    if is_complete:
        return noticed >= enough * total and all(argued.values()) and not unused
    unargued = noticed + sum(not each for each in argued.values())
    if is_sample:  # what it meets that nobody has argued yet is printed for the next complete run
        return noticed >= ENOUGH_OF_A_SAMPLE * unargued - CHANCE
    return noticed >= ENOUGH_OF_UNARGUED * unargued


def main():
    options = parse_arguments()
    sys.path.insert(0, str(ROOT / "host" / "python"))
    from qdp_host import EmbeddedHost  # noqa: PLC0415: its folder is not in the path before

    EmbeddedHost(BUILD / "host")  # stays loaded: the module finds the platform's libraries in this process
    sources = Sources(ROOT)
    is_sample = options.sample is not None
    is_complete = not (is_sample or options.unargued or options.files or options.kind)
    if options.source:
        maker = Rebuild(BUILD, ROOT)
        is_named = options.files and not is_sample
        mutants = [each for each in source_mutants(sources) if is_named or maker.is_quick(each.files[0])]
        kinds, enough, argued = SOURCE_KINDS, ENOUGH_OF_SOURCES, "equivalent_source"
    else:
        image = Image(BUILD)
        maker = InMemory(image)
        mutants = [each for make in (code_mutants, row_mutants, text_mutants) for each in make(image, sources)]
        kinds, enough, argued = KINDS, ENOUGH, "equivalent"
    mutants = chosen(mutants, options)
    equivalents = Equivalents(ROOT / "mutate" / "equivalent.toml", sources, argued)
    if is_sample or options.unargued:  # a complete run looks whether arguments still hold
        mutants = [each for each in mutants if not equivalents.reason(each)]
    kept = None if is_sample or options.source else WORK / "results.json"
    results = Results(kept, BUILD, ROOT, mutants, options.afresh, options.sample)
    try_all(maker, sources, results.untried(), options.jobs, results.add, options.sample)
    sys.exit(not summarise(results, equivalents, is_complete, is_sample, kinds, enough))


main()
