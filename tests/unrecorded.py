"""Results of the operator layer without their records, to compare with those of the module."""

from qdp.records import Record


def plain(value):
    """The module's own objects in a result's place."""
    if isinstance(value, Record):
        return {key: plain(item) for key, item in vars(value).items()}
    return type(value)(map(plain, value)) if isinstance(value, (list, tuple)) else value
