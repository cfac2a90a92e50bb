// SPDX-License-Identifier: GPL-3.0-or-later
#include "MetadataWriter.h"

#include "FlacMetadata.h"
#include "Id3Tag.h"
#include "Id3v1Tag.h"
#include "VorbisComment.h"
#include "model/Log.h"

#include <algorithm>
#include <array>

namespace MetadataWriter {

namespace {

void appendU32le(QByteArray &out, quint32 v)
{
    out.append(char(v)).append(char(v >> 8)).append(char(v >> 16)).append(char(v >> 24));
}

void appendU32be(QByteArray &out, quint32 v)
{
    out.append(char(v >> 24)).append(char(v >> 16)).append(char(v >> 8)).append(char(v));
}

constexpr quint32 maxId3Size = 0x0FFFFFFF;

struct FieldKey
{
    const FieldEdit *edit;
    QLatin1StringView vorbisKey;
    const char *id3Id;
};

std::array<FieldKey, 3> fieldKeys(const TagEdit &edit)
{
    return { { { &edit.title, QLatin1StringView("TITLE"), "TIT2" },
        { &edit.artist, QLatin1StringView("ARTIST"), "TPE1" },
        { &edit.album, QLatin1StringView("ALBUM"), "TALB" } } };
}

bool hasFrame(const QList<id3::Frame> &frames, const char *id)
{
    return std::any_of(frames.begin(), frames.end(), [id](const id3::Frame &f) { return f.id == id; });
}

// The last frame of an id with text: what the reader shows.
std::optional<QString> frameText(const QList<id3::Frame> &frames, const char *id)
{
    std::optional<QString> text;
    for (const id3::Frame &f : frames) {
        if (f.id == id)
            text = id3::decodeText(f.body);
    }
    if (text && text->isEmpty())
        return std::nullopt;
    return text;
}

// Frames for what a trailing ID3v1 tag holds and the ID3v2 frames don't.
QList<id3::Frame> foldedFrames(const id3v1::Tag &v1, const QList<id3::Frame> &frames)
{
    QList<id3::Frame> out;
    const auto text = [](const QString &s) { return QByteArray(1, '\x03') + s.toUtf8(); };
    if (!v1.year.isEmpty() && !hasFrame(frames, "TYER"))
        out.append({ "TYER", 0, text(v1.year) });
    if (!v1.comment.isEmpty() && !hasFrame(frames, "COMM"))
        out.append({ "COMM", 0, QByteArray("\x03XXX\0", 5) + v1.comment.toUtf8() });
    if (v1.track != 0 && !hasFrame(frames, "TRCK"))
        out.append({ "TRCK", 0, text(QString::number(v1.track)) });
    if (v1.genre <= id3v1::lastKnownGenre && !hasFrame(frames, "TCON"))
        out.append({ "TCON", 0, text(QStringLiteral("(%1)").arg(v1.genre)) });
    return out;
}

} // namespace

QString describe(WriteError error)
{
    switch (error) {
    case WriteError::readFailed:
        return QStringLiteral("the file could not be read");
    case WriteError::writeFailed:
        return QStringLiteral("the file could not be written");
    case WriteError::unsupportedFormat:
        return QStringLiteral("the file's format is not supported for writing");
    case WriteError::tooLarge:
        return QStringLiteral("the new tags would be too large for the format");
    case WriteError::damagedMetadata:
        return QStringLiteral("the file's metadata is damaged");
    }
    return {};
}

QByteArray buildVorbisComment(const QList<QByteArray> &comments)
{
    qsizetype size = 4 + 8 + 4;
    for (const QByteArray &c : comments)
        size += 4 + c.size();
    QByteArray body;
    body.reserve(size);
    appendU32le(body, 8);
    body.append("Tarnwell");
    appendU32le(body, quint32(comments.size()));
    for (const QByteArray &c : comments) {
        appendU32le(body, quint32(c.size()));
        body.append(c);
    }
    return body;
}

QByteArray buildVorbisComment(const std::optional<QString> &title, const std::optional<QString> &artist,
    const std::optional<QString> &album)
{
    QList<QByteArray> comments;
    if (title && !title->isEmpty())
        comments.append("TITLE=" + title->toUtf8());
    if (artist && !artist->isEmpty())
        comments.append("ARTIST=" + artist->toUtf8());
    if (album && !album->isEmpty())
        comments.append("ALBUM=" + album->toUtf8());
    return buildVorbisComment(comments);
}

Result writeFLACTags(QByteArrayView data, const TagEdit &edit)
{
    if (data.size() < 4 || !data.startsWith("fLaC"))
        return Result::failure(WriteError::unsupportedFormat, QStringLiteral("not a FLAC stream"));
    const flac::Layout layout = flac::parseLayout(data);
    if (!layout.damage.isEmpty())
        return Result::failure(WriteError::damagedMetadata, layout.damage);

    QList<flac::Block> kept;
    QList<QList<QByteArrayView>> oldComments; // per old comment block
    for (const flac::Block &b : layout.blocks) {
        if (b.type == flac::vorbisCommentType)
            oldComments.append(vorbis::comments(b.body).comments);
        else
            kept.append(b);
    }

    // The reader takes a field from the first comment block only, the last
    // comment winning: kept comments of later blocks go first so that what the
    // reader showed before the save is what it shows after.
    QList<QByteArrayView> ordered;
    for (qsizetype b = oldComments.size() - 1; b >= 1; --b)
        ordered.append(oldComments[b]);
    if (!oldComments.isEmpty())
        ordered.append(oldComments[0]);

    QList<QString> keys;
    for (QByteArrayView comment : ordered)
        keys.append(vorbis::upperKey(comment));

    QList<QByteArray> comments;
    for (const FieldKey &f : fieldKeys(edit)) {
        if (f.edit->action == FieldEdit::Action::set) {
            comments.append(f.vorbisKey.toString().toUtf8() + '=' + f.edit->value.toUtf8());
        } else if (f.edit->action == FieldEdit::Action::keep) {
            for (qsizetype i = 0; i < ordered.size(); ++i) {
                if (keys[i] == f.vorbisKey)
                    comments.append(ordered[i].toByteArray());
            }
        }
    }
    for (qsizetype i = 0; i < ordered.size(); ++i) {
        if (keys[i] != u"TITLE" && keys[i] != u"ARTIST" && keys[i] != u"ALBUM")
            comments.append(ordered[i].toByteArray());
    }

    const QByteArray commentBody = buildVorbisComment(comments);
    if (quint64(commentBody.size()) > flac::maxBlockLength)
        return Result::failure(WriteError::tooLarge);

    qsizetype size = 4 + 4 + commentBody.size() + (data.size() - layout.audioStart);
    for (const flac::Block &b : kept)
        size += 4 + b.body.size();
    QByteArray out;
    out.reserve(size);
    out.append("fLaC");
    const auto appendBlock = [&](quint8 type, QByteArrayView body, bool last) {
        const quint32 length = quint32(body.size());
        out.append(char((type & 0x7F) | (last ? 0x80 : 0)));
        out.append(char(length >> 16)).append(char(length >> 8)).append(char(length));
        out.append(body);
    };
    for (const flac::Block &b : kept)
        appendBlock(b.type, b.body, false);
    appendBlock(flac::vorbisCommentType, commentBody, true);
    out.append(data.sliced(layout.audioStart));
    return { std::move(out), {}, {} };
}

Result writeFLACTags(QByteArrayView data, const std::optional<QString> &title,
    const std::optional<QString> &artist, const std::optional<QString> &album)
{
    return writeFLACTags(data, TagEdit::fromValues(title, artist, album));
}

QByteArrayView stripID3v2(QByteArrayView data)
{
    return data.sliced(id3::leadingTagSize(data));
}

QByteArray id3TextFrame(const char *id, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    QByteArray frame;
    frame.reserve(11 + utf8.size());
    frame.append(id, 4);
    appendU32be(frame, quint32(1 + utf8.size()));
    frame.append('\0').append('\0').append('\x03');
    frame.append(utf8);
    return frame;
}

QByteArray id3Header(quint32 framesSize)
{
    QByteArray h("ID3\x03\x00\x00", 6);
    h.append(char((framesSize >> 21) & 0x7F)).append(char((framesSize >> 14) & 0x7F));
    h.append(char((framesSize >> 7) & 0x7F)).append(char(framesSize & 0x7F));
    return h;
}

Result writeID3Tags(QByteArrayView data, const TagEdit &edit)
{
    if (edit.keepsEverything())
        return { data.toByteArray(), {}, {} };
    QList<id3::Frame> oldFrames;
    if (id3::leadingTagSize(data) > 0) {
        id3::ParseResult parsed = id3::parseLeadingTag(data);
        if (!parsed.tag)
            return Result::failure(WriteError::unsupportedFormat, id3::describe(parsed.error, data));
        if (!parsed.tag->damage.isEmpty())
            return Result::failure(WriteError::damagedMetadata,
                QStringLiteral("the ID3v2 tag is damaged: ") + parsed.tag->damage);
        if (!parsed.tag->dropped.isEmpty())
            qCDebug(lcTags) << "frames left out of the new tag:" << parsed.tag->dropped;
        oldFrames = std::move(parsed.tag->frames);
    }
    const QByteArrayView afterTag = stripID3v2(data);
    const std::optional<id3v1::Tag> v1 = id3v1::parse(afterTag);
    const QByteArrayView audio = v1 ? afterTag.chopped(id3v1::tagSize) : afterTag;

    QByteArray frames;
    std::array<QString, 3> values; // what each field reads as afterwards
    const auto fields = fieldKeys(edit);
    const QString v1Values[3]
        = { v1 ? v1->title : QString(), v1 ? v1->artist : QString(), v1 ? v1->album : QString() };
    for (int i = 0; i < 3; ++i) {
        const FieldKey &f = fields[i];
        if (f.edit->action == FieldEdit::Action::set) {
            frames.append(id3TextFrame(f.id3Id, f.edit->value));
            values[i] = f.edit->value;
        } else if (f.edit->action == FieldEdit::Action::keep) {
            if (const auto old = frameText(oldFrames, f.id3Id)) {
                for (const id3::Frame &frame : oldFrames) {
                    if (frame.id == f.id3Id)
                        frames.append(id3::serialize(frame));
                }
                values[i] = *old;
            } else if (!v1Values[i].isEmpty()) {
                frames.append(id3TextFrame(f.id3Id, v1Values[i]));
                values[i] = v1Values[i];
            }
        }
    }
    for (const id3::Frame &old : oldFrames) {
        if (old.id != "TIT2" && old.id != "TPE1" && old.id != "TALB")
            frames.append(id3::serialize(old));
    }
    if (v1) {
        for (const id3::Frame &folded : foldedFrames(*v1, oldFrames))
            frames.append(id3::serialize(folded));
    }
    if (quint64(frames.size()) > maxId3Size)
        return Result::failure(WriteError::tooLarge);

    // The ID3v1 tag follows the new values, or goes when one doesn't fit it.
    QByteArray trailer;
    if (v1 && std::all_of(values.begin(), values.end(), id3v1::fits)) {
        id3v1::Tag updated = *v1;
        updated.title = values[0];
        updated.artist = values[1];
        updated.album = values[2];
        trailer = id3v1::serialize(updated);
    }

    QByteArray out;
    out.reserve(10 + frames.size() + audio.size() + trailer.size());
    if (!frames.isEmpty()) {
        out.append(id3Header(quint32(frames.size())));
        out.append(frames);
    }
    out.append(audio);
    out.append(trailer);
    return { std::move(out), {}, {} };
}

Result writeID3Tags(QByteArrayView data, const std::optional<QString> &title,
    const std::optional<QString> &artist, const std::optional<QString> &album)
{
    return writeID3Tags(data, TagEdit::fromValues(title, artist, album));
}

} // namespace MetadataWriter
