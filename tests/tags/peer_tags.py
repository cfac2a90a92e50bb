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


def read(path):
    f = mutagen.File(path)
    tags, out, md5 = f.tags if f is not None else None, {}, lambda data: hashlib.md5(data).hexdigest()
    if isinstance(tags, ID3):
        for key, fid in (("title", "TIT2"), ("artist", "TPE1"), ("album", "TALB")):
            if tags.getall(fid) and tags.getall(fid)[-1].text:
                out[key] = "/".join(str(t) for t in tags.getall(fid)[-1].text)
        if tags.getall("TCON") and tags.getall("TCON")[0].genres:
            out["genre"] = tags.getall("TCON")[0].genres[0]
        out["pictures"], out["frames"] = [md5(p.data) for p in tags.getall("APIC")], sorted({k[:4] for k in tags.keys()})
    elif isinstance(f, MP4) and tags is not None:
        out = {key: tags[atom][0] for key, atom in (("title", "\xa9nam"), ("artist", "\xa9ART"), ("album", "\xa9alb"),
                                                   ("genre", "\xa9gen")) if atom in tags}
        out["pictures"], out["frames"] = [md5(bytes(c)) for c in tags.get("covr", [])], sorted(tags.keys())
    elif tags is not None:  # Vorbis comments: the last of a key wins, as in our reader
        out = {key: tags.get(key)[-1] for key in ("title", "artist", "album", "genre") if tags.get(key)}
        out["pictures"] = [md5(p.data) for p in getattr(f, "pictures", [])]
        out["frames"] = sorted({k.upper() for k, _ in tags})
    print(json.dumps(out))


def tag_id3(path, version, cover):
    tags = ID3()
    for frame in (TIT2(encoding=3, text="Tïtle ID3"), TPE1(encoding=1, text="Ärtist"), TALB(encoding=0, text="Album"),
                  TCON(encoding=3, text="Jazz"), TRCK(encoding=3, text="3/12"), TDRC(encoding=3, text="2001-02-03"),
                  COMM(encoding=3, lang="eng", desc="", text="a comment"), TXXX(encoding=3, desc="MOOD", text="calm"),
                  APIC(encoding=3, mime="image/png", type=3, desc="cover", data=open(cover, "rb").read())):
        tags.add(frame)
    tags.save(path, v2_version=version)


def tag_m4a(path, cover):
    f = MP4(path)
    f.update({"\xa9nam": "Tïtle MP4", "\xa9ART": "Ärtist", "\xa9alb": "Album", "\xa9gen": "Soul", "trkn": [(3, 12)],
              "covr": [MP4Cover(open(cover, "rb").read(), imageformat=MP4Cover.FORMAT_PNG)]})
    f.save()


if __name__ == "__main__":
    commands = {"read": lambda a: read(a[0]), "tag-id3": lambda a: tag_id3(a[0], int(a[1]), a[2]),
                "tag-m4a": lambda a: tag_m4a(a[0], a[1]),
                "strip-id3v2": lambda a: delete(a[0], delete_v1=False, delete_v2=True)}
    commands[sys.argv[1]](sys.argv[2:])
