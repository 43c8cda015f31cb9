#!/usr/bin/env python3
"""Verifies sealed recordings with nothing but Python's standard library.

    verify_seal.py FILE...

prints "NAME: OK" or "NAME: FAILED (verdict: reason)" for each. Exit status: 0 all are intact; 1 one
is broken, unsealed or malformed; 2 one can't be read. A name that would spoil its line begins it
with a backslash and is escaped, as the checksum tools do.

It is also the shortest full description of the seal: a recording is a RIFF file of chunks (a name
of 4 bytes, a little-endian size, the payload; no padding). Its "ALCH" chunk is the metadata record,
which holds the seal: a flag, and the SHA-1 digest of what `sealed_header` builds, and the audio.
"""
import hashlib
import os
import re
import stat
import struct
import sys

RECORD_SIZE = 3090                    # the record's payload; these are places in it:
MAKER = slice(0, 6)
FLAG = slice(238, 242)
DIGEST = slice(242, 262)
SIGNATURE_AREA = slice(242, 322)      # the digest, and zeros
HEADER_SIZE = 3170                    # of a sealed file: everything before the audio
LONGEST_FILE = 0x7FFFFFFF
G726 = 100


class Malformed(Exception):
    pass


def rewind(file):
    """To the first chunk behind the RIFF header. Bytes 4 to 7, the RIFF size, don't matter."""
    file.seek(0)
    header = file.read(12)
    if header[:4] != b"RIFF" or header[8:] != b"WAVE":
        raise Malformed("it is no WAVE file")


def locate(file, name):
    """Moves forward to the payload of the next chunk of this name; returns its declared size."""
    while len(header := file.read(8)) == 8:
        size = struct.unpack("<I", header[4:])[0]
        if header[:4] == name:
            return size
        file.seek(size, os.SEEK_CUR)  # may lead behind the end: nothing is read there
    raise Malformed(f'it has no "{name.decode()}" chunk where one belongs')


def locate_filled(file, name, least):
    size = locate(file, name)
    if size == 0:
        raise Malformed(f'its "{name.decode()}" chunk is empty')
    if size < least:
        raise Malformed(f'its "{name.decode()}" chunk of {size} bytes is too small')
    return size


def read_record(file):
    """The first "ALCH" chunk of the file; what it lacks counts as zeros, what it has more doesn't."""
    rewind(file)
    size = locate_filled(file, b"ALCH", 1)
    return bytearray(file.read(min(size, RECORD_SIZE)).ljust(RECORD_SIZE, b"\0"))


def walk_to_audio(file):
    """Returns fact value (4 bytes) and declared audio size; the file then stands at the audio."""
    rewind(file)
    locate_filled(file, b"eyre", 8)
    file.read(8)                      # exactly: a longer chunk's rest is read as chunks
    size = locate_filled(file, b"fmt ", 16)
    tag, channels = struct.unpack("<HH12x", file.read(16).ljust(16, b"\0"))
    if channels != 1:
        raise Malformed(f"it declares {channels} channels instead of 1")
    if tag != G726:
        raise Malformed(f"it declares audio format {tag} instead of {G726}")
    file.seek(size - 16, os.SEEK_CUR)
    try:
        locate(file, b"fact")
    except Malformed:
        pass                          # then there is no "data" behind it either
    fact = file.read(4)               # exactly, as above
    return fact, locate(file, b"data")


def sealed_header(record, fact, audio_size):
    """What the digest covers before the audio: the header that sealing writes, its seal cleared."""
    record = bytearray(record)
    record[MAKER] = b"Tolva\0"
    record[FLAG] = bytes(4)
    record[SIGNATURE_AREA] = bytes(80)
    return (struct.pack("<4sI4s", b"RIFF", audio_size + HEADER_SIZE - 8, b"WAVE")
            + struct.pack("<4sI8x", b"eyre", 8)    # the start time is not covered
            + struct.pack("<4sIHHIIHH", b"fmt ", 16, G726, 1, 8000, 2000, 1, 2)
            + struct.pack("<4sI", b"ALCH", RECORD_SIZE) + record
            + struct.pack("<4sI", b"fact", 4) + fact
            + struct.pack("<4sI", b"data", audio_size))


def digest(file, header, audio_size):
    sha1 = hashlib.sha1(header)
    while audio_size > 0:
        block = file.read(min(audio_size, 1 << 20))
        if not block:
            raise OSError(0, "it was cut short while it was read")
        sha1.update(block)
        audio_size -= len(block)
    return sha1.digest()


def verdict(file, size):
    """The verdict on an open recording, and the reason for it."""
    if size > LONGEST_FILE:
        return "malformed", "it is longer than any sealed recording"
    try:
        record = read_record(file)
        if record[FLAG] != b"\1\0\0\0":
            return "unsealed", "it isn't marked as sealed"
        fact, audio_size = walk_to_audio(file)
    except Malformed as why:
        return "malformed", str(why)
    missing = audio_size - max(size - file.tell(), 0)
    if audio_size > LONGEST_FILE - HEADER_SIZE:
        return "malformed", "it declares more audio than any sealed recording holds"
    if missing > 0:
        return "malformed", f"it lacks {missing} of its {audio_size} bytes of audio"
    if digest(file, sealed_header(record, fact, audio_size), audio_size) != record[DIGEST]:
        return "broken", "its digest is not the one that was sealed"
    return "ok", ""


def verify(name):
    try:
        descriptor = os.open(name, os.O_RDONLY | os.O_NONBLOCK)  # no waiting for a pipe's writer
        status = os.fstat(descriptor)
        if not stat.S_ISREG(status.st_mode):
            os.close(descriptor)
            return "unreadable", "it is not a regular file"
        with open(descriptor, "rb") as file:
            return verdict(file, status.st_size)
    except OSError as error:
        return "unreadable", error.strerror


def shown(name):
    text = os.fsencode(name).decode("utf-8", "surrogateescape")  # odd bytes: U+DC80 to U+DCFF
    known = {"\\": "\\\\", "\n": "\\n", "\r": "\\r"}

    def escape(character):
        data = character[0].encode("utf-8", "surrogateescape")
        return known.get(character[0]) or "".join(f"\\x{byte:02x}" for byte in data)

    escaped = re.sub("[\\\\\x00-\x1f\x7f-\x9f\udc80-\udcff]", escape, text)
    return text if escaped == text else "\\" + escaped


def main(names):
    worst = 0 if names else 2
    for name in names:
        word, reason = verify(name)
        result = "OK" if word == "ok" else f"FAILED ({word}: {reason})"
        sys.stdout.buffer.write(f"{shown(name)}: {result}\n".encode())
        worst = max(worst, {"ok": 0, "unreadable": 2}.get(word, 1))
    return worst


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
