"""Anonymizes snapshots: addresses and names become tokens, the same ones for the same input wherever the key is the
same."""

import hashlib
import hmac
import ipaddress
import json
import os
import re

from . import lines
from .read import Snapshot
from .write import replacing

KEY_BYTES = 32
MAC = re.compile(r"(?<![0-9A-Fa-f])[0-9A-Fa-f]{2}(?:[:-][0-9A-Fa-f]{2}){5}(?![0-9A-Fa-f])")
IPV4 = re.compile(r"(?<![\w.])(?:\d{1,3}\.){3}\d{1,3}(?![\w.])")
IPV6 = re.compile(r"(?<![\w:])(?=[0-9A-Fa-f:]*:[0-9A-Fa-f:]*:)[0-9A-Fa-f:]{2,39}(?:\.\d+){0,3}(?![\w:])")
KEPT_MACS = frozenset(["00:00:00:00:00:00", "ff:ff:ff:ff:ff:ff"])

# What holds addresses as bytes or numbers, where no text shows them: left out as a whole.
LEFT_OUT = frozenset(["P4HWTableDump", "DumpLBDebugBuf", "P4MirrorTableDump", "P4PortMirrorTableDump"])

# The keys whose texts are names that people have given.
NAMES = frozenset(["name", "devName", "devname", "alias", "portset"])


class Tokens:
    """Makes tokens. The token of a name, an address or a MAC address has the form of what it stands for."""

    def __init__(self, key):
        self._key = key
        self.count = {"mac": 0, "ipv4": 0, "ipv6": 0, "name": 0}
        self._known = {}

    def _digest(self, kind, text):
        return hmac.new(self._key, (kind + ":" + text).encode("utf-8", "surrogatepass"), hashlib.sha256).digest()

    def _token(self, kind, text, make):
        known = self._known.get((kind, text))
        if known is None:
            self.count[kind] += 1
            known = self._known[kind, text] = make(self._digest(kind, text))
        return known

    def mac(self, text):
        plain = text.lower().replace("-", ":")
        if plain in KEPT_MACS:
            return text
        return self._token("mac", plain, lambda digest: ":".join(["02"] + ["%02x" % each for each in digest[:5]]))

    def ip(self, text):
        try:
            address = ipaddress.ip_address(text)
        except ValueError:
            return text
        if address.is_unspecified:
            return text
        if address.version == 4:
            return self._token("ipv4", str(address), lambda digest: "10." + ".".join(str(each) for each in digest[:3]))
        return self._token(
            "ipv6", str(address), lambda digest: str(ipaddress.IPv6Address(b"\xfd\x00" + digest[:14]))
        )

    def name(self, text):
        return self._token("name", text, lambda digest: "name-" + digest[:6].hex())


class Anonymizer:
    """Replaces what a snapshot's lines hold."""

    def __init__(self, tokens, names):
        self._tokens = tokens
        # Longer names first, so that one that another begins with is found as a whole.
        found = sorted((name for name in names if name), key=len, reverse=True)
        self._names = re.compile(
            r"(?<![\w-])(?:" + "|".join(map(re.escape, found)) + r")(?![\w-])" if found else r"(?!)"
        )

    def text(self, text):
        tokens = self._tokens
        text = self._names.sub(lambda found: tokens.name(found.group()), text)
        text = MAC.sub(lambda found: tokens.mac(found.group()), text)
        text = IPV4.sub(lambda found: tokens.ip(found.group()), text)
        return IPV6.sub(lambda found: tokens.ip(found.group()), text)

    def value(self, value):
        """A value with all its texts replaced, keys of dicts included."""
        if isinstance(value, str):
            return self.text(value)
        if isinstance(value, list):
            return [self.value(each) for each in value]
        if isinstance(value, dict):
            return {self.text(key): self.value(each) for key, each in value.items()}
        return value


def names_in(snapshot):
    """The names that people have given to things of the host."""
    names = {snapshot.head["machine"]["name"]} | set(snapshot.aliases) | set(snapshot.aliases.values())
    for reading in range(1, snapshot.readings + 1):
        for (method, arguments), answer in snapshot.calls(reading):
            if method in ("ListSwitches", "ListDevAffinity"):
                for entry in answer.get("result") or []:
                    names.update(value for key, value in entry.items() if key in NAMES)
    return names


def key_from(path):
    """The key of a file, which is made where there is none; a key of this run alone without a file."""
    if path is None:
        return os.urandom(KEY_BYTES)
    try:
        handle = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600)
    except FileExistsError:
        with open(path, "rb") as file:
            key = file.read(2 * KEY_BYTES)
        if len(key) < KEY_BYTES:
            raise OSError(None, "holds no key: it is shorter than {} bytes".format(KEY_BYTES), path)
        return key
    with os.fdopen(handle, "wb") as file:
        key = os.urandom(KEY_BYTES)
        file.write(key)
    return key


def anonymize(source, target, key):
    """Writes the snapshot `source` as `target`, without what names people, hosts or addresses. Captures are left
    out."""
    snapshot = Snapshot(source)
    tokens = Tokens(key)
    each = Anonymizer(tokens, names_in(snapshot))
    left_out = {"capture": 0}
    with replacing(target) as sink:
        for place, line in snapshot.lines():
            if line.startswith(lines.CAPTURE):
                left_out["capture"] += 1
                continue
            fields = json.loads(line.decode())
            method = fields["call"][0] if "call" in fields else None
            if method in LEFT_OUT:
                left_out[method] = left_out.get(method, 0) + 1
                continue
            if place == 0:
                fields["anonymized"] = {"replaced": sorted(tokens.count), "leftOut": sorted(LEFT_OUT | {"capture"})}
            if method:
                arguments = [method, each.value(fields["call"][1])]
                fields = dict({"call": arguments}, **each.value({key: fields[key] for key in fields if key != "call"}))
            else:
                fields = each.value(fields)
            sink.write(lines.dumped(fields))
        sink.write(lines.dumped({"replaced": tokens.count, "leftOut": left_out}))
