// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagEditorSession.h"

#include "Banner.h"
#include "model/TextUtil.h"
#include "tags/TagReader.h"
#include "tags/TagWriter.h"

#include "model/Log.h"

#include <QFileInfo>
#include <QtConcurrent>

namespace {

// A text field's value for a tag: empty means remove the tag.
std::optional<QString> tagValue(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional<QString>(text);
}

} // namespace

TagEditorSession::TagEditorSession(Banner &banner, SongLookup lookup, QObject *parent)
    : QObject(parent)
    , m_banner(banner)
    , m_lookup(std::move(lookup))
{
}

QString TagEditorSession::trackId() const
{
    return m_track ? trackjson::uuidText(m_track->id) : QString();
}

QString TagEditorSession::fileName() const
{
    return m_track ? text::displayName(m_track->path()) : QString();
}

QVariantMap TagEditorSession::meta() const
{
    QVariantMap map;
    if (!m_meta)
        return map;
    const auto put = [&map](const char *key, const std::optional<QString> &value) {
        if (value)
            map.insert(QLatin1String(key), *value);
    };
    put("title", m_meta->title);
    put("artist", m_meta->artist);
    put("album", m_meta->album);
    put("genre", m_meta->genre);
    return map;
}

void TagEditorSession::open(const QString &trackId)
{
    if (const std::optional<Track> track = m_lookup(trackId))
        open(*track);
}

void TagEditorSession::open(const Track &track)
{
    const quint64 request = ++m_request;
    QtConcurrent::run([path = track.path()] { return readMetadata(path); })
        .then(this, [this, request, track](const TrackMetadata &meta) {
            if (request == m_request)
                set(track, meta);
        });
}

void TagEditorSession::close()
{
    ++m_request;
    set(std::nullopt, std::nullopt);
}

void TagEditorSession::save(const QString &title, const QString &artist, const QString &album)
{
    if (!m_track) {
        close();
        return;
    }
    const Track song = *m_track;
    const QString path = song.path();
    const quint64 request = m_request;
    QtConcurrent::run([path, edit = TagEdit::fromValues(tagValue(title), tagValue(artist), tagValue(album))] {
        return saveTags(path, edit);
    }).then(this, [this, song, path, request](const SaveResult &result) {
            // The editor was closed or moved on to another song meanwhile.
            if (request != m_request)
                return;
            if (!result) {
                qCWarning(lcApp).noquote() << "tags not saved:" << result.message(path);
                // The editor stays with what was typed, and says why.
                setError(failureMessage(path, result));
                return;
            }
            close();
            m_banner.show(QStringLiteral("Tags saved"), Banner::Animation::Default, savedMessageMs);
            Q_EMIT tagsWritten({song});
        });
}

QString TagEditorSession::failureMessage(const QString &path, const SaveResult &result)
{
    return QStringLiteral("Could not save '%1': %2").arg(QFileInfo(path).fileName(), result.reason());
}

void TagEditorSession::setError(const QString &error)
{
    if (error == m_error)
        return;
    m_error = error;
    Q_EMIT errorChanged();
}

void TagEditorSession::set(const std::optional<Track> &track, const std::optional<TrackMetadata> &meta)
{
    const bool same = track == m_track && !meta && !m_meta;
    m_track = track;
    m_meta = meta;
    setError(QString());
    if (!same)
        Q_EMIT changed();
}
