"""Commands that the packages' tests run."""

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
