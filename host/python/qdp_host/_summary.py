"""A scenario in a few lines."""


def summary(scenario):
    yield str(scenario)
