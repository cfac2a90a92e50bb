#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
# Writes the seed corpus of every fuzz target: small, well-formed and slightly
# damaged FLAC, Vorbis comment, ID3v2 and CAF structures.
# Usage: seeds.py OUTPUT_DIR
import os
import struct
import sys


def le32(v):
    return struct.pack("<I", v)


def be32(v):
    return struct.pack(">I", v)


def synchsafe(v):
    return bytes((v >> s) & 0x7F for s in (21, 14, 7, 0))


def vorbis(comments, vendor=b"vendor"):
    return le32(len(vendor)) + vendor + le32(len(comments)) + b"".join(le32(len(c)) + c for c in comments)


def block(kind, body, last=False):
    return bytes([kind | (0x80 if last else 0)]) + len(body).to_bytes(3, "big") + body


STREAMINFO = bytes(10) + bytes([0x0A, 0xC4, 0x42, 0xF0, 0, 0, 0xAC, 0x44]) + bytes(16)
PICTURE = be32(3) + be32(9) + b"image/png" + be32(0) + be32(1) * 4 + be32(4) + b"\x89PNG"
COMMENTS = [b"TITLE=t", b"ARTIST=a", b"ALBUM=b", b"GENRE=g", b"=ALBUM=c", b"X\xff=1", b"DATE=2001"]
AUDIO = b"\xff\xf8\x69\x08" + bytes(12)

flac = [
    b"fLaC" + block(0, STREAMINFO) + block(4, vorbis(COMMENTS)) + block(1, bytes(8), True) + AUDIO,
    b"fLaC" + block(0, STREAMINFO) + block(6, PICTURE) + block(4, vorbis([b"TITLE=x"])) + block(4, vorbis([b"TITLE=y"]), True),
    b"fLaC" + block(0, STREAMINFO, True) + AUDIO,
    b"fLaC" + block(0, STREAMINFO) + b"\x04\x00\x10\x00" + vorbis([b"TITLE=cut"]),
]


def frame(version, fid, body, flags=0):
    if version == 2:
        return fid + len(body).to_bytes(3, "big") + body
    size = synchsafe(len(body)) if version == 4 else be32(len(body))
    return fid + size + struct.pack(">H", flags) + body


def tag(version, frames, flags=0):
    return b"ID3" + bytes([version, 0, flags]) + synchsafe(len(frames)) + frames


MPEG = (b"\xff\xfb\x90\x64" + bytes(100)) * 2
APIC = b"\x00image/jpeg\x00\x03cover\x00\xff\xd8\xff\xe0"
id3 = [
    tag(3, frame(3, b"TIT2", b"\x03old") + frame(3, b"APIC", APIC) + frame(3, b"TCON", b"\x00(17)")) + MPEG,
    tag(4, frame(4, b"TPE1", b"\x03A\x00B") + frame(4, b"TDRC", b"\x002001-02-03T04:05")
        + frame(4, b"APIC", b"\x07" + synchsafe(4) + b"\xff\x00\xe0x", 0x4043)) + MPEG,
    tag(2, frame(2, b"TT2", b"\x00old") + frame(2, b"PIC", b"\x00JPG\x03\x00\xff\xd8")) + MPEG,
    tag(3, b"\x00\x00\x00\x06" + bytes(6) + frame(3, b"TALB", b"\x01\xff\xfea\x00"), 0xC0) + MPEG,
    MPEG,
]


def caf_chunk(kind, body, size=None):
    return kind + struct.pack(">q", len(body) if size is None else size) + body


DESC = struct.pack(">d", 44100.0) + b"lpcm" + be32(0) + be32(4) + be32(1) + be32(2) + be32(16)
INFO = be32(3) + b"title\x00T\x00artist\x00A\x00genre\x00G\x00"
caf = [
    b"caff\x00\x01\x00\x00" + caf_chunk(b"desc", DESC) + caf_chunk(b"info", INFO) + caf_chunk(b"data", bytes(12)),
    b"caff\x00\x01\x00\x00" + caf_chunk(b"desc", DESC) + caf_chunk(b"pakt", bytes(8) + struct.pack(">q", 100) + bytes(8))
    + caf_chunk(b"data", bytes(8), -1),
]

corpus = {
    "flac_walk": flac,
    "vorbis_comment": [vorbis(COMMENTS), vorbis([b"TITLE=x"], b""), le32(0) + le32(0xFFFFFFFF) + le32(3) + b"A=b"],
    "flac_writer": [bytes([choice]) + f for choice in (0x00, 0x15, 0x2A, 0x3F) for f in flac],
    "id3_writer": [bytes([choice]) + f for choice in (0x02, 0x15, 0x3E) for f in id3],
    "caf": caf,
}

out = sys.argv[1]
for target, inputs in corpus.items():
    folder = os.path.join(out, target)
    os.makedirs(folder, exist_ok=True)
    for i, data in enumerate(inputs):
        with open(os.path.join(folder, "seed-%02d" % i), "wb") as f:
            f.write(data)
