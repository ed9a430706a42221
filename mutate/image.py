"""The built module as this process has loaded it: bytes, symbols and source lines, and where the tests' extensions,
which are linked from the same objects, hold the same bytes."""

import bisect
import ctypes
import os
import pathlib
import re
import subprocess
from dataclasses import dataclass

from elftools.elf.elffile import ELFFile
from elftools.elf.relocation import RelocationSection

# What is loaded, copied and changed. Text is code here, and read-only data are texts and tables of fields.
CODE, CONSTANTS, RELOCATED, DATA = ".text", ".rodata", ".data.rel.ro", ".data"

R_X86_64_RELATIVE = 8


@dataclass(frozen=True)
class Symbol:
    """A function or an object. `file` is the base name of the source that alone has it; None for a shared one."""

    file: str | None
    name: str
    address: int
    size: int

    @property
    def plain_name(self):
        """The name as the source has it, without what it is nested in."""
        for position in range(len(self.name)):
            if length := re.match(r"[1-9]\d*", self.name[position:]):
                name = self.name[position + length.end() :]
                if name == name[: int(length[0])] + "E":
                    return name[:-1]
        return self.name


@dataclass(frozen=True)
class Frame:
    """A place in the source: function, file and line."""

    function: str
    file: str
    line: int


class Library:
    """One loaded file. Addresses are those of the file, as symbols and disassembly have them."""

    def __init__(self, path):
        self.path = path
        self.handle = ctypes.PyDLL(str(path))
        self._base = self._loaded_at()
        with open(path, "rb") as file:
            elf = ELFFile(file)
            mapped = [each for each in elf.iter_sections() if each["sh_addr"]]
            self._sections = {each.name: (each["sh_addr"], each.data()) for each in mapped}
            self._offsets = {each.name: each["sh_offset"] - each["sh_addr"] for each in elf.iter_sections()}
            self.symbols = sorted(self._read_symbols(elf), key=lambda each: each.address)
            self.pointers = {
                each["r_offset"]: each["r_addend"]
                for section in elf.iter_sections()
                if isinstance(section, RelocationSection)
                for each in section.iter_relocations()
                if each["r_info_type"] == R_X86_64_RELATIVE
            }
        self._starts = [each.address for each in self.symbols]
        self._by_name = {(each.file, each.name): each for each in self.symbols}

    def _loaded_at(self):
        for line in pathlib.Path("/proc/self/maps").read_text().splitlines():
            if line.endswith(f" {self.path}"):
                return int(line.split("-")[0], 16)
        raise LookupError(f"{self.path} is not loaded")

    @staticmethod
    def _read_symbols(elf):
        file = None
        for each in elf.get_section_by_name(".symtab").iter_symbols():
            kind = each["st_info"]["type"]
            if kind == "STT_FILE":
                file = each.name or None  # shared ones follow a file without a name
            elif kind in ("STT_FUNC", "STT_OBJECT") and each["st_size"] and each["st_shndx"] != "SHN_UNDEF":
                own = each["st_info"]["bind"] == "STB_LOCAL" and each["st_other"]["visibility"] == "STV_DEFAULT"
                yield Symbol(file if own else None, each.name, each["st_value"], each["st_size"])

    def section(self, name):
        """(address, bytes) of a section as it stands in the file."""
        return self._sections[name]

    def section_of(self, address):
        for name, (start, content) in self._sections.items():
            if start <= address < start + len(content):
                return name
        return None

    def read(self, address, size):
        name = self.section_of(address)
        start, content = self._sections[name]
        return content[address - start : address - start + size]

    def symbol_at(self, address):
        i = bisect.bisect_right(self._starts, address) - 1
        if i >= 0 and address < self.symbols[i].address + self.symbols[i].size:
            return self.symbols[i]
        return None

    def symbol(self, file, name):
        return self._by_name.get((file, name))

    def write(self, address, new):
        """Changes what is loaded, read-only or not."""
        with open("/proc/self/mem", "wb", buffering=0) as memory:
            memory.seek(self._base + address)
            memory.write(new)

    def offset(self, address):
        """Where a byte stands in the file."""
        return address + self._offsets[self.section_of(address)]


class Image:
    """The module in `build`, and the tests' extensions, which are changed with it."""

    def __init__(self, build):
        self.module = Library(build / "_libqdp.abi3.so")
        self.extensions = [Library(build / "tests" / name) for name in ("torture.so", "core_under_test.abi3.so")]

    def apply(self, edits):
        """Makes edits in everything loaded. An edit is (address in the module, old bytes, new bytes)."""
        for address, old, new in edits:
            if self.module.read(address, len(old)) != old:
                raise LookupError(f"the module has other bytes at {address:#x}")
            self.module.write(address, new)
            for extension in self.extensions:
                for twin in self._twins(extension, address, old):
                    extension.write(twin, new)

    def changed_file(self, edits):
        """The module's file with the edits made."""
        content = bytearray(self.module.path.read_bytes())
        for address, old, new in edits:
            offset = self.module.offset(address)
            content[offset : offset + len(old)] = new
        return content

    def _twins(self, extension, address, old):
        """Where an extension has the same bytes: in the symbol of the same name, or else in a text that is equal."""
        symbol = self.module.symbol_at(address)
        if symbol:
            there = extension.symbol(symbol.file, symbol.name)
            twins = [there.address + address - symbol.address] if there and there.size == symbol.size else []
        else:
            text, position = self._whole_text(address)
            start, content = extension.section(CONSTANTS)
            twins = [start + found + position for found in _occurrences(content, text)]
        for twin in twins:
            if extension.read(twin, len(old)) != old:
                raise LookupError(f"{extension.path.name} differs from the module at {address:#x}, {symbol}")
        return twins

    def _whole_text(self, address):
        """The text around a byte, with its end, and the byte's place in it."""
        start, content = self.module.section(CONSTANTS)
        position = address - start
        first = content.rfind(b"\0", 0, position) + 1
        return content[first : content.index(b"\0", position) + 1], position - first

    def frames(self, addresses):
        """Of each address in the code its places in the source, from what is inlined out to the function itself."""
        known = self.extensions[0]  # has source lines
        there = {}
        for address in addresses:
            symbol = self.module.symbol_at(address)
            twin = symbol and known.symbol(symbol.file, symbol.name)
            if twin:
                there[address] = twin.address + address - symbol.address
        done = subprocess.run(
            ["addr2line", "--exe", str(known.path), "--inlines", "--functions", "--demangle", "--addresses"],
            input="\n".join(map(hex, there.values())),
            capture_output=True,
            text=True,
            check=True,
        )
        frames, function = {}, None
        for line in done.stdout.splitlines():
            if line.startswith("0x"):
                places = frames[int(line, 16)] = []
                function = None
            elif function is None:
                function = line
            else:
                file, _, number = line.split(" ")[0].rpartition(":")
                places.append(Frame(function, os.path.normpath(file), int(number) if number.isdigit() else 0))
                function = None
        return {address: frames[twin] for address, twin in there.items()}


def _occurrences(content, text):
    found = content.find(text)
    while found >= 0:
        yield found
        found = content.find(text, found + 1)
