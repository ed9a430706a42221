"""The command `qdp`: each module here without a leading underscore, but for `main`, declares one object of it."""

import os


def object_names():
    """The objects of the command, in alphabetic order: a file that is put here is one more."""
    names = (os.path.splitext(name) for name in os.listdir(os.path.dirname(__file__)))
    return sorted(name for name, suffix in names if suffix == ".py" and not name.startswith("_") and name != "main")


def load(name):
    """The declaration of an object, which its module calls OBJECT."""
    return getattr(__import__("{}.{}".format(__name__, name), fromlist=["OBJECT"]), "OBJECT")
