// SPDX-License-Identifier: GPL-3.0-or-later
#include "ContainerWriter.h"

#include "AtomicReplace.h"
#include "ByteCursor.h"
#include "ContainerReader.h"
#include "model/LocalPath.h"

#include <taglib/aifffile.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mp4file.h>
#include <taglib/wavfile.h>


namespace container {

namespace {

TagLib::String toTagLib(const QString &s)
{
    return TagLib::String(s.toStdString(), TagLib::String::UTF8);
}

// For each field: set its text, or with an empty text remove it; keep leaves it.
template<typename Apply> void forEachEdited(const TagEdit &edit, Apply apply)
{
    const std::pair<const FieldEdit *, CommonKey> fields[] = { { &edit.title, CommonKey::title },
        { &edit.artist, CommonKey::artist }, { &edit.album, CommonKey::albumName } };
    for (const auto &[field, key] : fields) {
        if (field->action != FieldEdit::Action::keep)
            apply(key, field->action == FieldEdit::Action::set ? field->value : QString());
    }
}

void setId3(TagLib::ID3v2::Tag *tag, CommonKey key, const TagLib::String &value)
{
    switch (key) {
    case CommonKey::title:
        tag->setTitle(value);
        break;
    case CommonKey::artist:
        tag->setArtist(value);
        break;
    case CommonKey::albumName:
        tag->setAlbum(value);
        break;
    case CommonKey::artwork:
        break;
    }
}

bool applyEdit(const QString &path, const QString &suffix, const TagEdit &edit)
{
    ensureTagLibSetUp();
    const QByteArray name = localpath::toBytes(path);
    if (suffix == u"m4a") {
        TagLib::MP4::File file(name.constData(), false);
        if (!file.isValid() || !file.tag())
            return false;
        forEachEdited(edit, [&](CommonKey key, const QString &value) {
            const TagLib::String atom = key == CommonKey::title ? "\xA9nam"
                : key == CommonKey::artist                      ? "\xA9"
                                                                  "ART"
                                                                : "\xA9"
                                                                  "alb";
            if (value.isEmpty())
                file.tag()->removeItem(atom);
            else
                file.tag()->setItem(atom, TagLib::StringList(toTagLib(value)));
        });
        return file.save();
    }
    if (suffix == u"aiff" || suffix == u"aif") {
        TagLib::RIFF::AIFF::File file(name.constData(), false);
        if (!file.isValid() || !file.tag())
            return false;
        forEachEdited(
            edit, [&](CommonKey key, const QString &value) { setId3(file.tag(), key, toTagLib(value)); });
        return file.save();
    }
    if (suffix == u"wav") {
        TagLib::RIFF::WAV::File file(name.constData(), false);
        if (!file.isValid())
            return false;
        forEachEdited(edit, [&](CommonKey key, const QString &value) {
            setId3(file.ID3v2Tag(), key, toTagLib(value));
            const TagLib::ByteVector id = key == CommonKey::title ? "INAM"
                : key == CommonKey::artist                        ? "IART"
                                                                  : "IPRD";
            if (value.isEmpty())
                file.InfoTag()->removeField(id);
            else
                file.InfoTag()->setFieldText(id, toTagLib(value));
        });
        return file.save();
    }
    return false;
}

QByteArray riffPayload(QByteArrayView file, bool bigEndian, const char *form, const char *chunkId)
{
    ByteCursor c(file);
    const auto magic = c.take(4);
    if (!magic || *magic != QByteArrayView(form) || !c.skip(4) || !c.skip(4))
        return {};
    while (c.remaining() >= 8) {
        const QByteArrayView id = *c.take(4);
        const quint32 size = bigEndian ? *c.u32be() : *c.u32le();
        const auto body = c.take(std::min<quint64>(size, quint64(c.remaining())));
        if (id == QByteArrayView(chunkId))
            return body->toByteArray();
        c.skip(size & 1);
    }
    return {};
}

QByteArray mp4Payload(QByteArrayView file)
{
    QByteArray payload;
    ByteCursor c(file);
    while (c.remaining() >= 8) {
        quint64 size = *c.u32be();
        const QByteArrayView type = *c.take(4);
        quint64 headerSize = 8;
        if (size == 1) {
            const auto large = c.u64be();
            if (!large)
                break;
            size = *large;
            headerSize = 16;
        } else if (size == 0) {
            size = headerSize + quint64(c.remaining());
        }
        if (size < headerSize)
            break;
        const auto body = c.take(size - headerSize);
        if (!body)
            break;
        if (type == QByteArrayView("mdat"))
            payload.append(*body);
    }
    return payload;
}

} // namespace

std::optional<QByteArray> audioPayload(audioformat::Kind kind, QByteArrayView file)
{
    QByteArray payload;
    if (kind == audioformat::Kind::wave)
        payload = riffPayload(file, false, "RIFF", "data");
    else if (kind == audioformat::Kind::aiff)
        payload = riffPayload(file, true, "FORM", "SSND");
    else if (kind == audioformat::Kind::mp4)
        payload = mp4Payload(file);
    if (payload.isEmpty())
        return std::nullopt;
    return payload;
}

SaveResult writeInto(AtomicReplace &replace, const QString &path, const QString &suffix,
    const QByteArray &oldData, const TagEdit &edit)
{
    const auto kind = audioformat::fromSuffix(suffix);
    const auto oldAudio = audioPayload(kind, oldData);
    if (!oldAudio)
        return { SaveError::noAudio, {} };
    const TrackMetadata before = metadataFromItems(read(path, suffix, wantTags).items);

    replace.setNamedTemporary(true);
    if (!replace.create() || !replace.write(oldData))
        return { SaveError::writeFailed, replace.errorString() };
    if (!applyEdit(replace.temporaryPath(), suffix, edit))
        return { SaveError::writeFailed, QStringLiteral("TagLib could not write the tags") };

    QString why;
    const auto newData = readWholeFile(replace.temporaryPath(), &why);
    if (!newData)
        return { SaveError::writeFailed, why };
    if (audioPayload(kind, newData->data) != oldAudio)
        return { SaveError::notVerified, QStringLiteral("the audio would have changed") };
    const TrackMetadata after = metadataFromItems(read(replace.temporaryPath(), suffix, wantTags).items);
    if (after.title != edit.title.applied(before.title) || after.artist != edit.artist.applied(before.artist)
        || after.album != edit.album.applied(before.album) || (before.genre && after.genre != before.genre))
        return { SaveError::notVerified, QStringLiteral("the tags did not read back as written") };
    return {};
}

} // namespace container
