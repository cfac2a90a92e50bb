// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Library.h"
#include "model/Track.h"
#include "model/TrackMetadata.h"
#include "tags/SavePlan.h"

#include <QObject>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <optional>

class Banner;

// The tag editor for one song (a row's pencil).
//
//   open(song) ─ tags read on the pool ─► open, with the tags as they are
//   save(title, artist, album) ─ written on the pool ─► closed; "Tags saved"
//                                                       and tagsWritten when written,
//                                   else open with the reason in error
//
// Only the latest open() opens the editor: a close meanwhile keeps it closed.
class TagEditorSession : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
    Q_PROPERTY(QString trackId READ trackId NOTIFY changed)
    Q_PROPERTY(QString fileName READ fileName NOTIFY changed)
    // The tags read for the song: {title, artist, album, genre}, absent tags left out.
    Q_PROPERTY(QVariantMap meta READ meta NOTIFY changed)
    // Why the last save failed, e.g. "Could not save 'x.mp3': the file is read-only".
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    // How long "Tags saved" stays, in milliseconds.
    static constexpr int savedMessageMs = 2500;

    TagEditorSession(Banner &banner, SongLookup lookup, QObject *parent = nullptr);

    bool isOpen() const { return m_track.has_value(); }
    QString trackId() const;
    QString fileName() const;
    QVariantMap meta() const;
    QString error() const { return m_error; }

    // "Could not save 'x.mp3': the file is read-only"
    static QString failureMessage(const QString &path, const SaveResult &result);

    Q_INVOKABLE void open(const QString &trackId);
    void open(const Track &track);
    Q_INVOKABLE void close();
    // Writes the three tags into the open song's file; an empty field removes
    // its tag.
    Q_INVOKABLE void save(const QString &title, const QString &artist, const QString &album);

Q_SIGNALS:
    void changed();
    void errorChanged();
    // A song's file was written (one song): what was read of it is stale.
    void tagsWritten(const QList<Track> &songs);

private:
    void set(const std::optional<Track> &track, const std::optional<TrackMetadata> &meta);
    void setError(const QString &error);

    Banner &m_banner;
    SongLookup m_lookup;
    std::optional<Track> m_track;
    std::optional<TrackMetadata> m_meta;
    quint64 m_request = 0;
    QString m_error;
};
