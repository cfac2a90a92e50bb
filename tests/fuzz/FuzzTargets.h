// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The bodies of the fuzz targets. libFuzzer runs them under ASan and UBSan;
// the ordinary test suite runs the kept regression inputs through them too.
// Besides not crashing, each checks a property and traps when it fails.

#include "tags/CafReader.h"
#include "tags/ContainerWriter.h"
#include "tags/FlacMetadata.h"
#include "tags/Id3Tag.h"
#include "tags/Id3v1Tag.h"
#include "tags/MetadataWriter.h"
#include "tags/MpegTags.h"
#include "tags/SavePlan.h"
#include "tags/VorbisComment.h"

#include <QByteArrayView>
#include <QFile>

#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

inline void require(bool ok)
{
    if (!ok)
        __builtin_trap();
}

inline bool sameTags(const TrackMetadata &a, const TrackMetadata &b)
{
    return a.title == b.title && a.artist == b.artist && a.album == b.album && a.genre == b.genre;
}

// The bytes as a file, for the readers that go to the disk.
struct MemoryFile
{
    const int fd = ::memfd_create("fuzz", MFD_CLOEXEC);
    explicit MemoryFile(QByteArrayView bytes)
    {
        QFile f;
        require(f.open(fd, QIODevice::WriteOnly) && f.write(bytes.data(), bytes.size()) == bytes.size());
    }
    ~MemoryFile() { ::close(fd); }
    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(fd); }
};

// The head walk over the whole file and the seeking file walk must agree.
inline void flacWalk(QByteArrayView bytes)
{
    require(sameTags(parseFLACMetadata(bytes), flac::parseFile(bytes).metadata));
    (void)flac::pictureData(bytes);
    (void)flac::streamInfoDuration(bytes);
    (void)flac::parseLayout(bytes);
}

// The disk reader, whose window is smaller than many blocks, against the walk
// in memory: the first byte picks the block boundary where a padding block of
// 64 KiB and more (the next two bytes) goes in; the rest is the file.
inline void flacDiskReader(QByteArrayView in)
{
    if (in.size() < 3)
        return;
    const QByteArrayView file = in.sliced(3);
    const quint32 big = 65536 + ((quint8(in[1]) << 8) | quint8(in[2])) * 16;
    qsizetype pos = 4;
    for (int block = 0; block < quint8(in[0]) % 8 && file.size() - pos >= 4 && !(quint8(file[pos]) & 0x80);
         ++block) {
        const qsizetype length
            = (quint8(file[pos + 1]) << 16) | (quint8(file[pos + 2]) << 8) | quint8(file[pos + 3]);
        if (length > file.size() - pos - 4)
            break;
        pos += 4 + length;
    }
    pos = std::min(pos, file.size());
    const QByteArray padding
        = "\x01" + QByteArray(1, char(big >> 16)) + char(big >> 8) + char(big) + QByteArray(big, '\0');
    const QByteArray grown = file.startsWith("fLaC")
        ? file.first(pos).toByteArray() + padding + file.sliced(pos).toByteArray()
        : file.toByteArray();
    const MemoryFile onDisk(grown);
    const flac::FileInfo read = flac::readFile(onDisk.path());
    require(sameTags(read.metadata, parseFLACMetadata(grown))
        && read.duration == flac::parseFile(grown).duration);
    (void)flac::readPicture(onDisk.path());
}

// Our ID3v2 parser, the ID3v1 fallback, pictures and genre lists, from
// memory and from the disk alike; an ID3v1 tag survives a round trip.
inline void id3Reader(QByteArrayView file)
{
    const QList<container::Item> items = mpeg::tagItems(file, MetadataWriter::stripID3v2(file), true);
    const MemoryFile onDisk(file);
    const QList<container::Item> read
        = mpeg::readFile(onDisk.path(), container::wantTags | container::wantPictures).items;
    require(sameTags(container::metadataFromItems(items), container::metadataFromItems(read)));
    require(container::artworkFromItems(items) == container::artworkFromItems(read));
    if (const auto v1 = id3v1::parse(file)) {
        const QByteArray bytes = id3v1::serialize(*v1);
        const auto again = id3v1::parse(bytes);
        require(again && id3v1::serialize(*again) == bytes);
    }
}

// The writers' targets: the first byte chooses what happens to each field
// (two bits each); the rest is the file.
template<void (*body)(uint8_t, QByteArrayView)> void withChoice(QByteArrayView in)
{
    if (!in.isEmpty())
        body(quint8(in[0]), in.sliced(1));
}

inline TagEdit editFrom(uint8_t choice)
{
    const auto field = [](int bits, const char *value) {
        return (bits & 3) == 0 ? FieldEdit::keep()
            : (bits & 3) == 1  ? FieldEdit::remove()
                               : FieldEdit::set(QString::fromUtf8(value));
    };
    return { field(choice, "Tïtle"), field(choice >> 2, "Ärtist"), field(choice >> 4, "Album=x") };
}

inline bool readsAsEdited(const TagEdit &edit, const TrackMetadata &before, const TrackMetadata &after)
{
    const auto check
        = [](const FieldEdit &f, const std::optional<QString> &old, const std::optional<QString> &now) {
              return f.action == FieldEdit::Action::keep ? (!old || now == old) : now == f.applied(old);
          };
    return check(edit.title, before.title, after.title) && check(edit.artist, before.artist, after.artist)
        && check(edit.album, before.album, after.album) && (!before.genre || after.genre == before.genre);
}

// The audio of MPEG data: between the leading ID3v2 tag and a trailing ID3v1 tag.
inline QByteArrayView mpegAudio(QByteArrayView file)
{
    const QByteArrayView rest = MetadataWriter::stripID3v2(file);
    return id3v1::parse(rest) ? rest.chopped(id3v1::tagSize) : rest;
}

inline TrackMetadata mpegTags(QByteArrayView file)
{
    return container::metadataFromItems(mpeg::tagItems(file, MetadataWriter::stripID3v2(file), false));
}

// The leading tag's frames other than title, artist and album.
inline QList<id3::Frame> otherFrames(QByteArrayView file)
{
    QList<id3::Frame> frames;
    if (auto parsed = id3::parseLeadingTag(file); parsed.tag)
        frames = parsed.tag->frames;
    frames.removeIf([](const id3::Frame &f) { return f.id == "TIT2" || f.id == "TPE1" || f.id == "TALB"; });
    return frames;
}

inline bool sameFrames(const QList<id3::Frame> &a, const QList<id3::Frame> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const id3::Frame &x, const id3::Frame &y) {
        return x.id == y.id && x.flags == y.flags && x.body == y.body;
    });
}

// The whole decision of a save: any input is refused, or gives contents whose
// audio and other blocks or frames are the old ones in order, which read back
// as edited, and which a second save with the same edit leaves alone.
inline void planWith(const QString &suffix, uint8_t choice, QByteArrayView file)
{
    const TagEdit edit = editFrom(choice);
    const SavePlan plan = planSave(file, suffix, edit);
    if (plan.action == SavePlan::Action::container)
        require(container::audioPayload(audioformat::fromSuffix(suffix), file).has_value());
    if (plan.action != SavePlan::Action::write)
        return;
    const QByteArray &out = plan.data;
    if (suffix == u"flac") {
        flac::Layout before = flac::parseLayout(file);
        flac::Layout after = flac::parseLayout(out);
        require(after.damage.isEmpty() && out.sliced(after.audioStart) == file.sliced(before.audioStart));
        before.blocks.removeIf([](const flac::Block &b) { return b.type == flac::vorbisCommentType; });
        require(after.blocks.first(after.blocks.size() - 1) == before.blocks);
        require(readsAsEdited(edit, parseFLACMetadata(file), parseFLACMetadata(out)));
    } else {
        require(mpegAudio(out) == mpegAudio(file));
        const QList<id3::Frame> before = otherFrames(file);
        const QList<id3::Frame> after = otherFrames(out);
        require(after.size() >= before.size() && sameFrames(before, after.first(before.size())));
        require(readsAsEdited(edit, mpegTags(file), mpegTags(out)));
    }
    require(planSave(out, suffix, edit).action == SavePlan::Action::nothing);
}

inline const QString suffixes[]
    = { QStringLiteral("flac"), QStringLiteral("mp3"), QStringLiteral("m4a"), QStringLiteral("wav") };

// One kind of file, or in savePlan bits 6-7 of the first byte pick it.
template<int suffix> void planFor(uint8_t choice, QByteArrayView file)
{
    planWith(suffixes[suffix < 0 ? choice >> 6 : suffix], choice, file);
}

// Whether RIFF chunks or MP4 boxes end exactly where the file does, so that
// one more can be appended without landing inside another.
inline bool endsOnBoundary(audioformat::Kind kind, QByteArrayView file)
{
    const bool mp4 = kind == audioformat::Kind::mp4;
    qsizetype pos = mp4 ? 0 : 12;
    while (file.size() - pos >= 8) {
        quint64 length = 0;
        for (int i = 0; i < 4; ++i) {
            const int shift = (kind == audioformat::Kind::wave ? i : 3 - i) * 8;
            length |= quint64(quint8(file[pos + (mp4 ? 0 : 4) + i])) << shift;
        }
        if (mp4 && length < 8)
            return false; // to the end of the file, or a 64-bit size: left alone
        const quint64 step = mp4 ? length : 8 + length + (length & 1);
        if (step > quint64(file.size() - pos))
            return false;
        pos += qsizetype(step);
    }
    return pos == file.size();
}

// The audio payload that tells whether TagLib kept the audio of WAV, AIFF and
// MP4 files: never larger than the file, and not moved by a chunk appended.
inline void containerPayload(uint8_t choice, QByteArrayView file)
{
    const audioformat::Kind kinds[]
        = { audioformat::Kind::wave, audioformat::Kind::aiff, audioformat::Kind::mp4 };
    const audioformat::Kind kind = kinds[choice % 3];
    const auto payload = container::audioPayload(kind, file);
    require(!payload || (!payload->isEmpty() && payload->size() <= file.size()));
    if (!endsOnBoundary(kind, file))
        return;
    // An eight-byte chunk or box of filler, its length in the container's byte order.
    const QByteArray chunk = kind == audioformat::Kind::mp4
        ? QByteArray::fromHex("00000010") + "free"
        : "JUNK" + QByteArray::fromHex(kind == audioformat::Kind::wave ? "08000000" : "00000008");
    require(container::audioPayload(kind, file.toByteArray() + chunk + "12345678") == payload);
}

struct Target
{
    const char *name;
    void (*run)(QByteArrayView);
};

// Every target by the name of its folder of seeds and regression inputs.
inline constexpr Target targets[] = { { "flac_walk", flacWalk }, { "flac_disk_reader", flacDiskReader },
    { "vorbis_comment",
        [](QByteArrayView b) { (void)parseVorbisComment(b), (void)vorbis::splitComment(b); } },
    { "caf", [](QByteArrayView b) { (void)caf::parse(b); } }, { "id3_reader", id3Reader },
    { "flac_writer", withChoice<planFor<0>> }, { "id3_writer", withChoice<planFor<1>> },
    { "save_plan", withChoice<planFor<-1>> }, { "container_payload", withChoice<containerPayload> } };

} // namespace fuzz
