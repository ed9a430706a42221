"""The aliases of switches, from the snapshot of the switch configuration that LibraryInit loads into the process."""

from .errors import Refused

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Dict, Optional

NAME_BYTES = 128  # of a portset name or an alias; one that is as long has no end of its own


class Aliases:
    """Loads the snapshot when it is first needed, and once more where an alias is unknown."""

    known = None  # type: Optional[Dict[str, str]]  # aliases by portset name, where no snapshot is to be loaded

    def __init__(self) -> None:
        self._library = None  # type: Any
        self._given = {}  # type: Dict[str, str]  # by portset name: aliases that led to it

    def load(self) -> None:
        """Loads the snapshot, as it is now."""
        status = self._exported().LibraryInit() & 0xFFFFFFFF
        if status:
            raise Refused("LibraryInit: status {:#x}".format(status), hint="the switch configuration cannot be read")

    def _exported(self) -> "Any":
        if self._library is None:
            import ctypes

            import _libqdp

            self._library = ctypes.PyDLL(_libqdp.__file__)
        return self._library

    def _loaded(self) -> bool:
        """Makes sure that a snapshot is there. Whether this loaded it."""
        if self._library is not None:
            return False
        try:
            self.load()
        except Refused:
            self._library = None
            raise
        return True

    def _translated(self, function: str, text: str) -> str:
        """What one of the module's plain functions makes of a name; "" where it knows none."""
        import ctypes

        encoded = text.encode("utf-8", "surrogateescape")
        if not encoded or b"\0" in encoded:
            return ""
        name = ctypes.create_string_buffer(NAME_BYTES + 1)
        if getattr(self._library, function)(encoded, name):
            return ""
        return name.value.decode("utf-8", "surrogateescape")

    def portset_of(self, alias: str) -> "Optional[str]":
        """The portset name of the switch with that alias; None where there is no such switch."""
        if self.known is not None:
            return next((portset for portset, each in self.known.items() if each == alias), None)
        was_loaded_now = self._loaded()
        portset = self._translated("DVSAliasToPortsetName", alias)
        if not portset and not was_loaded_now:
            self.load()
            portset = self._translated("DVSAliasToPortsetName", alias)
        if portset:
            self._given[portset] = alias
        return portset or None

    def alias_of(self, portset: str) -> "Optional[str]":
        """The alias of the switch with that portset name.

        None where it cannot be told: for a switch without a portset property whose portset name is not its alias, and
        for one whose portset name begins with that of another switch, which the module takes for it. `portset_of` with
        their alias finds both, and makes it known here.
        """
        if self.known is not None:
            return self.known.get(portset)
        self._loaded()
        for alias in (self._given.get(portset), self._translated("DVSPortsetNameToAlias", portset), portset):
            if alias and self._translated("DVSAliasToPortsetName", alias) == portset:
                return alias
        return None
