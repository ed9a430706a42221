"""How fast counters grow, from two readings and the time between them."""

import time
from typing import Any, Mapping, Optional


def growth(old: int, new: int, bits: int = 64) -> Optional[int]:
    """How much a counter of so many bits has grown, which may have wrapped meanwhile, and be shown signed or unsigned.
    None where it rather went back, as it does when it is set to zero."""
    grown = (new - old) % (1 << bits)
    return grown if grown < 1 << (bits - 1) else None


class Reading:
    """Counters, and when they were read. Made right after they were."""

    def __init__(self, counters: Mapping[str, Any]) -> None:
        self.time = time.monotonic()
        self.counters = counters

    def growth(self, before: "Reading", *keys: str, bits: int = 64) -> Optional[int]:
        """How much these counters have grown together since an earlier reading; None where one went back."""
        total = 0
        for key in keys:
            grown = growth(before.counters[key], self.counters[key], bits)
            if grown is None:
                return None
            total += grown
        return total

    def rate(self, before: "Reading", *keys: str, bits: int = 64) -> Optional[float]:
        """The same a second."""
        grown = self.growth(before, *keys, bits=bits)
        return None if grown is None else grown / (self.time - before.time)
