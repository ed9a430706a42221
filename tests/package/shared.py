"""What the packages' tests share: commands that they run, and the files that packages are to hold."""

import subprocess

TIMEOUT = 1200  # seconds


def ran(*command, **options):
    """A command that has ended, well or not."""
    command = [str(each) for each in command]
    pipe = subprocess.PIPE
    return subprocess.run(command, stdout=pipe, stderr=pipe, universal_newlines=True, timeout=TIMEOUT, **options)


def output(*command, **options):
    """What a command prints that ends well."""
    done = ran(*command, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def host_files(root):
    """The files of the embedded host's package, as they are to be installed."""
    host = root / "host"
    sources = {path.name for path in (host / "python" / "qdp_host").glob("*.py")}
    stand_ins = {f"stand_ins/lib{name}.so" for name in ("qdp", "qdpcapture", "qdphost", "qmtPublic")}
    return sources | stand_ins | {f"scenarios/{name}.json" for name in [*scenarios(root), "schema"]}


def scenarios(root):
    """The names of the scenarios that come along."""
    return {path.stem for path in (root / "host" / "scenarios").glob("*.json")} - {"schema"}
