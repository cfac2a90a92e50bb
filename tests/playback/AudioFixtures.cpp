// SPDX-License-Identifier: GPL-3.0-or-later
#include "AudioFixtures.h"

#include "support/TestSupport.h"

#include <algorithm>

namespace fixtures {

namespace {

struct Spec
{
    Format format;
    const char *name;
    const char *extension;
    const char *codec; // ffmpeg arguments
};

const Spec specs[] = {
    { Format::Wav, "wav", "wav", "-c:a pcm_s16le" },
    { Format::Flac, "flac", "flac", "-c:a flac" },
    { Format::Mp3, "mp3", "mp3", "-c:a libmp3lame -b:a 128k" },
    { Format::Mp3VbrNoXing, "mp3 vbr without xing", "mp3", "-c:a libmp3lame -q:a 4 -write_xing 0" },
    { Format::M4aAac, "m4a aac", "m4a", "-c:a aac -b:a 128k" },
    { Format::M4aAlac, "m4a alac", "m4a", "-c:a alac" },
    { Format::Aiff, "aiff", "aiff", "-c:a pcm_s16be" },
    { Format::CafLpcm, "caf lpcm", "caf", "-c:a pcm_s16be" },
    { Format::CafAlac, "caf alac", "caf", "-c:a alac" },
};

const Spec &spec(Format format)
{
    return *std::find_if(
        std::begin(specs), std::end(specs), [&](const Spec &s) { return s.format == format; });
}

bool ffmpeg(const char *codec, const QString &out, double seconds, int frequency)
{
    const QStringList args
        = QStringList { QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"),
              QStringLiteral("-y"), QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
              QStringLiteral("sine=frequency=%1:sample_rate=44100:duration=%2").arg(frequency).arg(seconds),
              QStringLiteral("-ac"), QStringLiteral("2") }
        + QString::fromLatin1(codec).split(u' ') + QStringList { out };
    return testsupport::run(QStringLiteral("ffmpeg"), args).exitCode == 0;
}

const char tagScript[] = R"(
import sys
from mutagen import File
from mutagen.id3 import ID3, TXXX
from mutagen.mp4 import MP4, MP4FreeForm
path, gain, peak = sys.argv[1:4]
f = File(path)
if isinstance(f, MP4):
    for key, value in (('replaygain_track_gain', gain), ('replaygain_track_peak', peak)):
        f['----:com.apple.iTunes:' + key] = [MP4FreeForm(value.encode())]
elif hasattr(f, 'add_tags') and not path.endswith('.flac'):
    if f.tags is None:
        f.add_tags()
    for key, value in (('REPLAYGAIN_TRACK_GAIN', gain), ('REPLAYGAIN_TRACK_PEAK', peak)):
        f.tags.add(TXXX(encoding=3, desc=key, text=[value]))
else:
    f['REPLAYGAIN_TRACK_GAIN'] = gain
    f['REPLAYGAIN_TRACK_PEAK'] = peak
f.save()
)";

} // namespace

QString extension(Format format)
{
    return QString::fromLatin1(spec(format).extension);
}

QString name(Format format)
{
    return QString::fromLatin1(spec(format).name);
}

bool makeAudio(Format format, const QString &path, double seconds, int frequency)
{
    return ffmpeg(spec(format).codec, path, seconds, frequency);
}

bool tagTrackGain(const QString &path, const QString &gain, const QString &peak)
{
    const QStringList args { QStringLiteral("-c"), QString::fromLatin1(tagScript), path, gain, peak };
    return testsupport::run(QStringLiteral("/usr/bin/python3"), args).exitCode == 0;
}

QByteArray decode(const QString &path)
{
    QStringList args = QStringLiteral("-nostdin -v error -i").split(u' ');
    args << path << QStringLiteral("-f s16le -ac 2 -ar 44100 -").split(u' ');
    return testsupport::run(QStringLiteral("ffmpeg"), args).out;
}

} // namespace fixtures
