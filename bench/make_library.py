#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes a library of small tagged FLAC files, fast enough for 100,000 songs.

Usage: make_library.py SEED.flac ROOT SONGS ARTISTS

Every file is the seed's stream information and audio with a Vorbis comment
of its own (title, artist, album), laid out as ROOT/<artist>/<album>/<nn title>.flac,
ten songs an album. Only the metadata blocks are rewritten, so writing a file
costs one small write.
"""
import os
import struct
import sys


def audio_of(seed):
    """The seed's STREAMINFO block body and its audio frames."""
    with open(seed, "rb") as f:
        data = f.read()
    if data[:4] != b"fLaC":
        sys.exit(f"{seed}: not a FLAC file")
    pos, info = 4, None
    while True:
        header = data[pos]
        length = int.from_bytes(data[pos + 1:pos + 4], "big")
        if header & 0x7F == 0:
            info = data[pos + 4:pos + 4 + length]
        pos += 4 + length
        if header & 0x80:
            return info, data[pos:]


def comment(fields):
    vendor = b"tarnwell bench"
    body = struct.pack("<I", len(vendor)) + vendor + struct.pack("<I", len(fields))
    for key, value in fields:
        entry = f"{key}={value}".encode()
        body += struct.pack("<I", len(entry)) + entry
    return body


def main():
    seed, root, songs, artists = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
    info, frames = audio_of(seed)
    head = b"fLaC" + bytes([0]) + len(info).to_bytes(3, "big") + info
    per_artist = max(1, songs // artists)
    written = 0
    for a in range(artists):
        artist = f"Artist {a:05d}"
        count = per_artist + (1 if a < songs - per_artist * artists else 0)
        for t in range(count):
            album = f"Album {t // 10:02d}"
            folder = os.path.join(root, artist, album)
            if t % 10 == 0:
                os.makedirs(folder, exist_ok=True)
            title = f"Song {a}-{t}"
            block = comment([("TITLE", title), ("ARTIST", artist), ("ALBUM", album)])
            with open(os.path.join(folder, f"{t % 10 + 1:02d} {title}.flac"), "wb") as f:
                f.write(head + bytes([0x84]) + len(block).to_bytes(3, "big") + block + frames)
            written += 1
            if written >= songs:
                return


main()
