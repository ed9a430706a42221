"""Changes of the module's texts: messages, formats, names and documentation."""

import string

from mutate.code import named_addresses
from mutate.image import CONSTANTS
from mutate.mutants import Mutant

PRINTABLE = set(string.printable.encode())
ALTERED = 1  # the bit of a character


def text_at(image, address):
    """The text that begins at an address, or None for what is no text."""
    if image.module.section_of(address) != CONSTANTS:
        return None
    start, content = image.module.section(CONSTANTS)
    first = address - start
    text = content[first : content.index(b"\0", first)]
    return text if text and PRINTABLE.issuperset(text) else None


def altered(address, text):
    """The edits that alter the character in the middle."""
    middle = len(text) // 2
    old = text[middle : middle + 1]
    return ((address + middle, old, bytes([old[0] ^ ALTERED])),)


def in_source(text):
    """The beginning of a text's first line as a source has it."""
    return text.decode().split("\n")[0][:30].replace("\\", "\\\\").replace('"', '\\"')


def text_mutants(image, sources):
    places = {}  # of a text, by its address
    named = [(by, address) for by, address in named_addresses(image) if text_at(image, address)]
    frames = image.frames(dict.fromkeys(by for by, _ in named))
    for by, address in named:
        if place := sources.place(frames.get(by, [])):
            places.setdefault(address, {})[place[0]] = place
    for by, address in image.module.pointers.items():
        symbol = image.module.symbol_at(by)
        if symbol and (text := text_at(image, address)):
            file, line = sources.table(symbol, in_source(text))
            places.setdefault(address, {}).setdefault(file, (file, line, symbol.plain_name))
    for address, by_file in sorted(places.items()):
        text = text_at(image, address).decode()
        _, line, function = next(iter(by_file.values()))
        yield Mutant("messages", tuple(by_file), line, function, f"{text!r} altered", altered(address, text.encode()))
