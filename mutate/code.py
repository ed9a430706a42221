"""Changes of the module's code: each condition reversed, each bound off by one; and which texts the code names."""

from capstone import CS_ARCH_X86, CS_MODE_64, Cs
from capstone.x86 import X86_INS_CMP, X86_OP_IMM, X86_OP_MEM, X86_REG_RIP

from mutate.image import CODE
from mutate.mutants import Mutant

# A condition is the low four bits of an opcode, and its opposite differs in the lowest.
SHORT_JUMPS = range(0x70, 0x80)
TWO_BYTES = 0x0F
NEAR_JUMPS, SETS, MOVES = range(0x80, 0x90), range(0x90, 0xA0), range(0x40, 0x50)
OPPOSITE = 1

PREFIXES = {0x2E, 0x3E, 0x66, 0xF2, 0xF3, *range(0x40, 0x50)}


def instructions(image):
    """The instructions of functions; what stands between them is padding."""
    disassembler = Cs(CS_ARCH_X86, CS_MODE_64)
    disassembler.detail = True
    for symbol in image.module.symbols:
        if image.module.section_of(symbol.address) == CODE:
            code = image.module.read(symbol.address, symbol.size)
            yield from disassembler.disasm(code, symbol.address)


def condition_at(instruction):
    """Where in an instruction the byte with its condition is: of a jump, a set or a move. None without a condition."""
    code = bytes(instruction.bytes)
    start = 0
    while start < len(code) and code[start] in PREFIXES:
        start += 1
    if code[start] in SHORT_JUMPS:
        return start
    if code[start] == TWO_BYTES and any(code[start + 1] in each for each in (NEAR_JUMPS, SETS, MOVES)):
        return start + 1
    return None


def is_bound(instruction):
    return instruction.id == X86_INS_CMP and instruction.operands[1].type == X86_OP_IMM


def reversed_condition(instruction):
    """(what is changed, its edits)."""
    at = condition_at(instruction)
    old = instruction.bytes[at : at + 1]
    new = bytes([old[0] ^ OPPOSITE])
    return [(f"{instruction.mnemonic} reversed", ((instruction.address + at, bytes(old), new),))]


def moved_bounds(instruction):
    """The bound one higher and one lower, where the instruction has room for it."""
    at, size = instruction.imm_offset, instruction.imm_size
    old = bytes(instruction.bytes[at : at + size])
    bound = int.from_bytes(old, "little", signed=True)
    most = 1 << (8 * size - 1)
    changes = []
    for step in (1, -1):
        if -most <= bound + step < most:
            new = (bound + step).to_bytes(size, "little", signed=True)
            changes.append((f"compared with {bound + step}, not {bound}", ((instruction.address + at, old, new),)))
    return changes


def code_mutants(image, sources):
    found = []
    for each in instructions(image):
        if condition_at(each) is not None:
            found += [("jumps", each.address, *change) for change in reversed_condition(each)]
        elif is_bound(each):
            found += [("bounds", each.address, *change) for change in moved_bounds(each)]
    frames = image.frames(dict.fromkeys(address for _, address, *_ in found))
    for kind, address, change, edits in found:
        places = frames.get(address, [])
        if place := sources.place(places):
            file, line, function = place
            yield Mutant(kind, (file,), line, function, change, edits, sources.inlined(places))


def named_addresses(image):
    """(address of an instruction, address that it names), for every address in the data that the code names."""
    for each in instructions(image):
        for operand in each.operands:
            if each.mnemonic == "lea" and operand.type == X86_OP_MEM and operand.mem.base == X86_REG_RIP:
                yield each.address, each.address + each.size + operand.mem.disp
