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
    package = host / "python" / "qdp_host"
    sources = {path.relative_to(package).as_posix() for path in package.rglob("*") if path.suffix in (".py", ".typed")}
    stand_ins = {f"stand_ins/lib{name}.so" for name in ("qdp", "qdpcapture", "qdphost", "qmtPublic")}
    in_scenarios = {f"scenarios/{name}.json" for name in [*scenarios(root), "schema"]}
    return sources | stand_ins | in_scenarios | {"include/control.h"}


def layer_files(root):
    """The files of the operator layer, as they are to be installed in its folder."""
    layer = root / "qdp"
    sources = {path.relative_to(layer).as_posix() for path in layer.rglob("*") if path.is_file()}
    left_out = {name for name in sources if "__pycache__" in name or name.endswith((".cpp", ".in"))}
    return sources - left_out | {"_call.abi3.so", "_version.py"}


def command_documents(command):
    """The man page and the completions of a command, below the share folder."""
    completions = {f"bash-completion/completions/{command}", f"zsh/vendor-completions/_{command}"}
    if command == "qdp":
        completions.add("fish/vendor_completions.d/qdp.fish")
    return completions | {f"man/man1/{command}.1.gz"}


def ansible_modules(root):
    """The modules for Ansible, below the share folder."""
    return {f"ansible/plugins/modules/{path.name}" for path in (root / "ansible").glob("*.py")}


def examples(root):
    """The files of the examples, below the repository."""
    found = {path.relative_to(root) for path in (root / "examples").rglob("*") if path.is_file()}
    return {path.as_posix() for path in found if not {"__pycache__", ".pytest_cache"} & set(path.parts)}


def scenarios(root):
    """The names of the scenarios that come along."""
    return {path.stem for path in (root / "host" / "scenarios").glob("*.json")} - {"schema"}
