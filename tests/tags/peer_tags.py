#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
# mutagen as an independent reader and tagger for the peer tests.
#   peer_tags.py read FILE                   JSON: title, artist, album, genre, pictures (md5), frames
#   peer_tags.py tag-id3 FILE VERSION COVER  ID3v2.VERSION tag with text, picture, comment, user text
#   peer_tags.py tag-m4a FILE COVER          MP4 atoms with a cover
#   peer_tags.py strip-id3v2 FILE            removes the ID3v2 tag, keeping an ID3v1 tag
import hashlib
import json
import sys

import mutagen
from mutagen.id3 import APIC, COMM, ID3, TALB, TCON, TDRC, TIT2, TPE1, TRCK, TXXX, delete
from mutagen.mp4 import MP4, MP4Cover


def md5(data):
    return hashlib.md5(data).hexdigest()


def read(path):
    f = mutagen.File(path)
    out = {}
    tags = f.tags if f is not None else None
    if isinstance(tags, ID3):
        for key, fid in (("title", "TIT2"), ("artist", "TPE1"), ("album", "TALB")):
            frames = tags.getall(fid)
            if frames and frames[-1].text:
                out[key] = "/".join(str(t) for t in frames[-1].text)
        tcon = tags.getall("TCON")
        if tcon and tcon[0].genres:
            out["genre"] = tcon[0].genres[0]
        out["pictures"] = [md5(p.data) for p in tags.getall("APIC")]
        out["frames"] = sorted({k[:4] for k in tags.keys()})
    elif isinstance(f, MP4) and tags is not None:
        for key, atom in (("title", "\xa9nam"), ("artist", "\xa9ART"), ("album", "\xa9alb"), ("genre", "\xa9gen")):
            if atom in tags:
                out[key] = tags[atom][0]
        out["pictures"] = [md5(bytes(c)) for c in tags.get("covr", [])]
        out["frames"] = sorted(tags.keys())
    elif tags is not None:  # Vorbis comments: the last of a key wins, as in our reader
        for key in ("title", "artist", "album", "genre"):
            values = tags.get(key)
            if values:
                out[key] = values[-1]
        out["pictures"] = [md5(p.data) for p in getattr(f, "pictures", [])]
        out["frames"] = sorted({k.upper() for k, _ in tags})
    print(json.dumps(out))


def tag_id3(path, version, cover):
    tags = ID3()
    tags.add(TIT2(encoding=3, text="Tïtle ID3"))
    tags.add(TPE1(encoding=1, text="Ärtist"))
    tags.add(TALB(encoding=0, text="Album"))
    tags.add(TCON(encoding=3, text="Jazz"))
    tags.add(TRCK(encoding=3, text="3/12"))
    tags.add(TDRC(encoding=3, text="2001-02-03"))
    tags.add(COMM(encoding=3, lang="eng", desc="", text="a comment"))
    tags.add(TXXX(encoding=3, desc="MOOD", text="calm"))
    tags.add(APIC(encoding=3, mime="image/png", type=3, desc="cover", data=open(cover, "rb").read()))
    tags.save(path, v2_version=version)


def tag_m4a(path, cover):
    f = MP4(path)
    f["\xa9nam"] = "Tïtle MP4"
    f["\xa9ART"] = "Ärtist"
    f["\xa9alb"] = "Album"
    f["\xa9gen"] = "Soul"
    f["trkn"] = [(3, 12)]
    f["covr"] = [MP4Cover(open(cover, "rb").read(), imageformat=MP4Cover.FORMAT_PNG)]
    f.save()


if __name__ == "__main__":
    command = sys.argv[1]
    if command == "read":
        read(sys.argv[2])
    elif command == "tag-id3":
        tag_id3(sys.argv[2], int(sys.argv[3]), sys.argv[4])
    elif command == "tag-m4a":
        tag_m4a(sys.argv[2], sys.argv[3])
    elif command == "strip-id3v2":
        delete(sys.argv[2], delete_v1=False, delete_v2=True)
    else:
        sys.exit("unknown command " + command)
