#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
# Writes the seed corpus of every fuzz target: small, well-formed and slightly
# damaged FLAC, Vorbis comment, ID3v2, CAF and RIFF/MP4 structures.
# Usage: seeds.py OUTPUT_DIR
import os
import struct
import sys

le32, be32 = (lambda v: struct.pack("<I", v)), (lambda v: struct.pack(">I", v))
synchsafe = lambda v: bytes((v >> s) & 0x7F for s in (21, 14, 7, 0))


def vorbis(comments, vendor=b"vendor"):
    return le32(len(vendor)) + vendor + le32(len(comments)) + b"".join(le32(len(c)) + c for c in comments)


def block(kind, body, last=False):
    return bytes([kind | (0x80 if last else 0)]) + len(body).to_bytes(3, "big") + body


def crc8(data, crc=0):
    for b in data:
        crc ^= b
        for _ in range(8):
            crc = ((crc << 1) ^ 0x07) & 0xFF if crc & 0x80 else (crc << 1) & 0xFF
    return crc


STREAMINFO = bytes(10) + bytes([0x0A, 0xC4, 0x42, 0xF0, 0, 0, 0xAC, 0x44]) + bytes(16)
FRAME_HEADER = b"\xff\xf8\xc9\x18\x00"
AUDIO = FRAME_HEADER + bytes([crc8(FRAME_HEADER)]) + bytes(12)
PICTURE = be32(3) + be32(9) + b"image/png" + be32(0) + be32(1) * 4 + be32(4) + b"\x89PNG"
COMMENTS = [b"TITLE=t", b"ARTIST=a", b"ALBUM=b", b"GENRE=g", b"=ALBUM=c", b"X\xff=1", b"DATE=2001"]
head = b"fLaC" + block(0, STREAMINFO)
flac = [head + block(4, vorbis(COMMENTS)) + block(1, bytes(8), True) + AUDIO,
        head + block(6, PICTURE) + block(4, vorbis([b"TITLE=x"])) + block(4, vorbis([b"TITLE=y"]), True),
        b"fLaC" + block(0, STREAMINFO, True) + AUDIO, head + b"\x04\x00\x10\x00" + vorbis([b"TITLE=cut"])]


def frame(version, fid, body, flags=0):
    if version == 2:
        return fid + len(body).to_bytes(3, "big") + body
    return fid + (synchsafe if version == 4 else be32)(len(body)) + struct.pack(">H", flags) + body


def tag(version, frames, flags=0):
    return b"ID3" + bytes([version, 0, flags]) + synchsafe(len(frames)) + frames


def id3v1(title, artist, album):
    return b"TAG" + b"".join(f.ljust(30, b"\0") for f in (title, artist, album)) + b"1999" \
        + b"comment".ljust(28, b"\0") + b"\0\x05\x11"


MPEG = (b"\xff\xfb\x90\x64" + bytes(413)) * 2
id3 = [tag(3, frame(3, b"TIT2", b"\x03old") + frame(3, b"APIC", b"\x00image/jpeg\x00\x03cover\x00\xff\xd8\xff\xe0")
           + frame(3, b"TCON", b"\x00(17)")) + MPEG,
       tag(4, frame(4, b"TPE1", b"\x03A\x00B") + frame(4, b"TDRC", b"\x002001-02-03T04:05")
           + frame(4, b"APIC", b"\x07" + synchsafe(4) + b"\xff\x00\xe0x", 0x4043)) + MPEG,
       tag(2, frame(2, b"TT2", b"\x00old") + frame(2, b"PIC", b"\x00JPG\x03\x00\xff\xd8")) + MPEG,
       tag(3, b"\x00\x00\x00\x06" + bytes(6) + frame(3, b"TALB", b"\x01\xff\xfea\x00"), 0xC0) + MPEG,
       MPEG, MPEG + id3v1(b"v1 title", b"v1 artist", b"v1 album"),
       tag(3, frame(3, b"TIT2", b"\x03v2") + frame(3, b"TPE2", b"") + frame(3, b"TALB", b"\x03")) + MPEG
       + id3v1(b"", b"a", b"b")]

chunk = lambda kind, body, size=None: kind + struct.pack(">q", len(body) if size is None else size) + body
DESC = struct.pack(">d", 44100.0) + b"lpcm" + be32(0) + be32(4) + be32(1) + be32(2) + be32(16)
caf = [b"caff\0\1\0\0" + chunk(b"desc", DESC) + chunk(b"info", be32(3) + b"title\0T\0artist\0A\0genre\0G\0")
       + chunk(b"data", bytes(12)),
       b"caff\0\1\0\0" + chunk(b"desc", DESC) + chunk(b"pakt", bytes(8) + struct.pack(">q", 100) + bytes(8))
       + chunk(b"data", bytes(8), -1)]


def riff(form, kind, chunks, big):
    pack = ">I" if big else "<I"
    body = kind + b"".join(c + struct.pack(pack, len(d)) + d + b"\0" * (len(d) % 2) for c, d in chunks)
    return form + struct.pack(pack, len(body)) + body


box = lambda kind, body: be32(len(body) + 8) + kind + body
containers = [
    b"\0" + riff(b"RIFF", b"WAVE", [(b"fmt ", bytes(16)), (b"data", bytes(9)), (b"LIST", b"INFOINAM\2\0\0\0t\0")], False),
    b"\1" + riff(b"FORM", b"AIFF", [(b"COMM", bytes(18)), (b"SSND", bytes(12))], True),
    b"\2" + box(b"ftyp", b"M4A \0\0\0\0") + box(b"mdat", b"\x21\x10" * 8) + box(b"moov", box(b"udta", b""))]

# The first byte of the writers' inputs picks the edit; in save_plan bits 6-7
# pick .flac, .mp3, .m4a or .wav.
corpus = {
    "flac_walk": flac, "caf": caf, "id3_reader": id3, "container_payload": containers,
    "vorbis_comment": [vorbis(COMMENTS), vorbis([b"TITLE=x"], b""), le32(0) + le32(0xFFFFFFFF) + le32(3) + b"A=b"],
    "flac_writer": [bytes([choice]) + f for choice in (0x00, 0x15, 0x2A, 0x3F) for f in flac],
    "id3_writer": [bytes([choice]) + f for choice in (0x02, 0x15, 0x3E) for f in id3],
    "flac_disk_reader": [bytes([i, 0, 1]) + f for i, f in enumerate(flac)],
    "save_plan": [b"\x3e" + f for f in flac] + [bytes([0x46 | c]) + f for c in (0x00, 0x15, 0x28) for f in id3]
    + [b"\x82" + containers[2][1:], b"\xc2" + containers[0][1:]],
}
for target, inputs in corpus.items():
    os.makedirs(os.path.join(sys.argv[1], target), exist_ok=True)
    for i, data in enumerate(inputs):
        with open(os.path.join(sys.argv[1], target, "seed-%02d" % i), "wb") as f:
            f.write(data)
