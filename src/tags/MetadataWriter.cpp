// SPDX-License-Identifier: GPL-3.0-or-later
#include "MetadataWriter.h"

#include "ByteCursor.h"
#include "FlacMetadata.h"
#include "Id3Tag.h"
#include "VorbisComment.h"
#include "model/Log.h"

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

// The comments of one VORBIS_COMMENT body, raw; a damaged list gives the
// comments before the damage.
QList<QByteArrayView> commentsOf(QByteArrayView body)
{
    QList<QByteArrayView> comments;
    ByteCursor c(body);
    const auto vendorLength = c.u32le();
    if (!vendorLength || !c.skip(*vendorLength))
        return comments;
    const auto count = c.u32le();
    if (!count)
        return comments;
    for (quint32 i = 0; i < *count; ++i) {
        const auto length = c.u32le();
        const auto comment = length ? c.take(*length) : std::nullopt;
        if (!comment)
            break;
        comments.append(*comment);
    }
    return comments;
}

struct FieldKey
{
    const FieldEdit *edit;
    QLatin1StringView vorbisKey;
    const char *id3Id;
};

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
        return Result::failure(WriteError::unsupportedFormat);

    struct Block
    {
        quint8 type;
        QByteArrayView body;
    };
    QList<Block> kept;
    QList<QList<QByteArrayView>> oldComments; // per old comment block
    ByteCursor c(data);
    c.skip(4);
    qsizetype audioStart = c.position();
    for (;;) {
        const qsizetype headerAt = c.position();
        const auto header = c.u8();
        const auto length = c.u24be();
        const auto body = (header && length) ? c.take(*length) : std::nullopt;
        if (!body) {
            audioStart = headerAt; // a damaged block is carried along as audio
            break;
        }
        audioStart = c.position();
        const quint8 type = *header & 0x7F;
        if (type == flac::vorbisCommentType)
            oldComments.append(commentsOf(*body));
        else
            kept.append({ type, *body });
        if (*header & 0x80)
            break;
    }

    // The reader takes a field from the first comment block only, the last
    // comment winning: kept comments of later blocks go first so that what the
    // reader showed before the save is what it shows after.
    QList<QByteArrayView> ordered;
    for (qsizetype b = oldComments.size() - 1; b >= 1; --b)
        ordered.append(oldComments[b]);
    if (!oldComments.isEmpty())
        ordered.append(oldComments[0]);

    const FieldKey fields[] = { { &edit.title, QLatin1StringView("TITLE"), "TIT2" },
        { &edit.artist, QLatin1StringView("ARTIST"), "TPE1" },
        { &edit.album, QLatin1StringView("ALBUM"), "TALB" } };
    QList<QString> keys;
    for (QByteArrayView comment : ordered)
        keys.append(vorbis::upperKey(comment));

    QList<QByteArray> comments;
    for (const FieldKey &f : fields) {
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

    qsizetype size = 4 + 4 + commentBody.size() + (data.size() - audioStart);
    for (const Block &b : kept)
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
    for (const Block &b : kept)
        appendBlock(b.type, b.body, false);
    appendBlock(flac::vorbisCommentType, commentBody, true);
    out.append(data.sliced(audioStart));
    return { std::move(out), {} };
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
        return { data.toByteArray(), {} };
    const bool setsAField = edit.title.action == FieldEdit::Action::set
        || edit.artist.action == FieldEdit::Action::set || edit.album.action == FieldEdit::Action::set;
    QList<id3::Frame> oldFrames;
    if (id3::leadingTagSize(data) > 0) {
        id3::ParseResult parsed = id3::parseLeadingTag(data);
        if (!parsed.tag && !setsAField)
            return { data.toByteArray(), {} }; // nothing to write: the file stays as it is
        if (!parsed.tag) {
            qCDebug(lcTags) << "the old ID3v2 tag can't be carried over (version" << int(quint8(data[3]))
                            << "flags" << Qt::hex << int(quint8(data[5])) << ")";
            return Result::failure(WriteError::unsupportedFormat);
        }
        if (!parsed.tag->dropped.isEmpty())
            qCDebug(lcTags) << "frames without an ID3v2.3 form are left out:" << parsed.tag->dropped;
        oldFrames = std::move(parsed.tag->frames);
    }

    const FieldKey fields[] = { { &edit.title, QLatin1StringView("TITLE"), "TIT2" },
        { &edit.artist, QLatin1StringView("ARTIST"), "TPE1" },
        { &edit.album, QLatin1StringView("ALBUM"), "TALB" } };
    QByteArray frames;
    bool anyValue = false;
    for (const FieldKey &f : fields) {
        if (f.edit->action == FieldEdit::Action::set) {
            frames.append(id3TextFrame(f.id3Id, f.edit->value));
            anyValue = true;
        } else if (f.edit->action == FieldEdit::Action::keep) {
            for (const id3::Frame &old : oldFrames) {
                if (old.id == f.id3Id) {
                    frames.append(id3::serialize(old));
                    anyValue = anyValue || !id3::decodeText(old.body).value_or(QString()).isEmpty();
                }
            }
        }
    }
    // Nothing to say about title, artist or album: the file stays as it is.
    if (!anyValue)
        return { data.toByteArray(), {} };
    for (const id3::Frame &old : oldFrames) {
        if (old.id != "TIT2" && old.id != "TPE1" && old.id != "TALB")
            frames.append(id3::serialize(old));
    }
    if (quint64(frames.size()) > maxId3Size)
        return Result::failure(WriteError::tooLarge);

    const QByteArrayView audio = stripID3v2(data);
    QByteArray out;
    out.reserve(10 + frames.size() + audio.size());
    out.append(id3Header(quint32(frames.size())));
    out.append(frames);
    out.append(audio);
    return { std::move(out), {} };
}

Result writeID3Tags(QByteArrayView data, const std::optional<QString> &title,
    const std::optional<QString> &artist, const std::optional<QString> &album)
{
    return writeID3Tags(data, TagEdit::fromValues(title, artist, album));
}

} // namespace MetadataWriter
