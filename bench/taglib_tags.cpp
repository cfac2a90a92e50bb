// SPDX-License-Identifier: GPL-3.0-or-later
// The yardstick for `tarnwell-cli tags`: TagLib's FileRef on each file, printing
// the same fields (title, artist, album, genre, duration) one line a file.
#include <taglib/fileref.h>
#include <taglib/tag.h>

#include <cstdio>
#include <string>

namespace {

void field(std::string &line, const char *name, const TagLib::String &value)
{
    if (value.isEmpty())
        return;
    line += ",\"";
    line += name;
    line += "\":\"";
    line += value.to8Bit(true);
    line += '"';
}

} // namespace

int main(int argc, char **argv)
{
    std::string line;
    for (int i = 1; i < argc; ++i) {
        TagLib::FileRef ref(argv[i], true, TagLib::AudioProperties::Fast);
        line = "{\"path\":\"";
        line += argv[i];
        line += '"';
        if (!ref.isNull() && ref.tag()) {
            const TagLib::Tag *tag = ref.tag();
            field(line, "title", tag->title());
            field(line, "artist", tag->artist());
            field(line, "album", tag->album());
            field(line, "genre", tag->genre());
        }
        if (!ref.isNull() && ref.audioProperties())
            line += ",\"duration\":" + std::to_string(ref.audioProperties()->lengthInMilliseconds() / 1000.0);
        line += "}\n";
        std::fwrite(line.data(), 1, line.size(), stdout);
    }
    return 0;
}
