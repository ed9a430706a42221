"""Makes the man pages and the completions of the commands from their parsers.

    make_documents.py BUILD

They go into BUILD/package/documents/module and /host. Where the tools are not installed, nothing is made.
"""

import argparse
import gzip
import pathlib
import sys
import tempfile
from unittest import mock

BUILD = pathlib.Path(sys.argv[1]).resolve()
ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENTS = BUILD / "package" / "documents"
OF_LAYER = {
    "qdp.1.gz": "man/man1/qdp.1.gz",
    "qdp.bash": "bash-completion/completions/qdp",
    "_qdp": "zsh/vendor-completions/_qdp",
    "qdp.fish": "fish/vendor_completions.d/qdp.fish",
}


class Built(Exception):
    """A command has built its parser."""


def parser_of_host():
    """The parser that qdp-host builds when it starts."""
    from qdp_host import __main__ as command

    def stop(parser, *_):
        raise Built(parser)

    with mock.patch.object(argparse.ArgumentParser, "parse_args", stop):
        try:
            command.options_of([])
        except Built as built:
            return built.args[0]
    raise AssertionError("qdp-host has parsed its command line without a parser")


def make_of_layer():
    """The documents of qdp, which it declares by itself."""
    import command_files

    with tempfile.TemporaryDirectory() as made:
        command_files.main(made)
        for name, place in OF_LAYER.items():
            write(DOCUMENTS / "module" / place, pathlib.Path(made, name).read_bytes())


def make_of_host():
    """The documents of qdp-host."""
    import shtab
    from build_manpages.manpage import Manpage
    from command_files import BASH_OF_ALL_CHOICES

    parser = parser_of_host()
    parser.man_short_description = "run scripts of _libqdp on the embedded host"
    page = str(Manpage(parser)).rstrip() + "\n"
    write(DOCUMENTS / "host" / "man" / "man1" / "qdp-host.1.gz", gzip.compress(page.encode(), 9, mtime=0))
    bash = shtab.complete(parser, shell="bash")
    for here, there in BASH_OF_ALL_CHOICES:
        bash = bash.replace(here, there)
    write(DOCUMENTS / "host" / "bash-completion" / "completions" / "qdp-host", bash.encode())
    zsh = shtab.complete(parser, shell="zsh")
    write(DOCUMENTS / "host" / "zsh" / "vendor-completions" / "_qdp-host", zsh.encode())


def write(path, data):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


def main():
    try:
        import build_manpages.manpage
        import shtab
    except ImportError as error:
        print(f"no man pages and completions are made: {error}; script/setup installs what they need")
        return
    sys.path[:0] = [str(BUILD), str(ROOT / "host" / "python")]
    make_of_layer()
    make_of_host()
    (DOCUMENTS / "made").touch()


if __name__ == "__main__":
    main()
