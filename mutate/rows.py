"""Changes of the field tables: the place that each row names. Keys are texts, which mutate/texts.py changes.

In the built file a table is an array of rows: the pointer to the key, the place, and the pointer to the converter,
which is null for an integer. See src/core/fields.h, which this file follows."""

import struct
from dataclasses import dataclass, replace

from mutate.image import CONSTANTS, RELOCATED
from mutate.mutants import Mutant
from mutate.texts import text_at

PLACE = struct.Struct("<HHBB?x")
PLACE_OFFSET, CONVERTER_OFFSET, ROW_BYTES = 8, 16, 24
WORD_BITS = 64

TEXT_CONVERTER = "text_field_object"


@dataclass(frozen=True)
class Place:
    offset: int
    size: int
    up: int
    down: int
    is_signed: bool

    def packed(self):
        return PLACE.pack(*vars(self).values())


@dataclass(frozen=True)
class Row:
    address: int
    key: str
    place: Place
    converter: int | None  # its address

    def moved_to(self, place):
        """The edit that gives the row another place."""
        return self.address + PLACE_OFFSET, self.place.packed(), place.packed()


def row_at(image, address):
    """The row at an address; None when there is none."""
    pointers = image.module.pointers
    key = address in pointers and text_at(image, pointers[address])
    place = image.module.read(address + PLACE_OFFSET, PLACE.size)
    if not key or address + PLACE_OFFSET in pointers or place[-1] != 0 or place[-2] > 1:
        return None
    return Row(address, key.decode(), Place(*PLACE.unpack(place)), pointers.get(address + CONVERTER_OFFSET))


def rows_at(image, symbol):
    """The rows of the table that a symbol is; none when it is no table."""
    if symbol.size % ROW_BYTES:
        return []
    rows = [row_at(image, symbol.address + at) for at in range(0, symbol.size, ROW_BYTES)]
    return rows if all(rows) else []


def tables(image):
    for symbol in image.module.symbols:
        if image.module.section_of(symbol.address) in (CONSTANTS, RELOCATED):
            if rows := rows_at(image, symbol):
                yield symbol, rows


def changed_places(row, is_text):
    """(what is changed, the place with it). An integer's bits are told by two shifts: `down` by their number, `up` by
    their number and where they begin."""
    place = row.place
    yield "offset one higher", replace(place, offset=place.offset + 1)
    if is_text:
        yield "size one higher", replace(place, size=place.size + 1)
    if place.down < WORD_BITS:
        for what, up, down in [
            ("shift one higher", -1, 0),
            ("shift one lower", 1, 0),
            ("width one higher", -1, -1),
            ("width one lower", 1, 1),
        ]:
            if 0 <= place.up + up < WORD_BITS and 0 <= place.down + down < WORD_BITS:
                yield what, replace(place, up=place.up + up, down=place.down + down)
    if row.converter is None:
        yield "sign changed", replace(place, is_signed=not place.is_signed)


def row_mutants(image, sources):
    for symbol, rows in tables(image):
        for i, row in enumerate(rows):
            is_text = row.converter and TEXT_CONVERTER in image.module.symbol_at(row.converter).name
            changes = [(what, (row.moved_to(place),)) for what, place in changed_places(row, is_text)]
            following = rows[i + 1] if i + 1 < len(rows) else None
            if following and following.converter == row.converter:
                edits = (row.moved_to(following.place), following.moved_to(row.place))
                changes.append(("place swapped with the next", edits))
            file, line = sources.table(symbol, row.key)
            for what, edits in changes:
                yield Mutant("rows", (file,), line, f'{symbol.plain_name} "{row.key}"', what, edits)
