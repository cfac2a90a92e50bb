// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Library.h"
#include "model/Track.h"

#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <optional>

class Banner;
class PlaylistStore;

// The playlists as the sidebar shows and changes them: the list, the panel
// that creates one, and songs dragged from a song list and dropped on one.
//
//   beginDrag(song) ─► draggingTrackId (forgotten after 5 s without a drop)
//   drop(song, playlist) ─► PlaylistStore.addTrack ─► "Added to …" / "Already in …"
//   create(name) ─► PlaylistStore.createPlaylist, panel closed
class Playlists : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    // [{id, name, count}], in the store's order.
    Q_PROPERTY(QVariantList entries READ entries NOTIFY entriesChanged)
    Q_PROPERTY(bool showingCreate READ showingCreate WRITE setShowingCreate NOTIFY showingCreateChanged)
    // The song being dragged towards a playlist; empty when none.
    Q_PROPERTY(QString draggingTrackId READ draggingTrackId NOTIFY draggingTrackChanged)

public:
    // How long "Added to …" and "Already in …" stay, in milliseconds.
    static constexpr int droppedMessageMs = 2000;
    // A drag that was not dropped is forgotten after this long.
    static constexpr int dragResetMs = 5000;

    Playlists(PlaylistStore &store, Banner &banner, SongLookup lookup, QObject *parent = nullptr);

    QVariantList entries() const;
    bool showingCreate() const { return m_showingCreate; }
    void setShowingCreate(bool on);
    QString draggingTrackId() const;

    Q_INVOKABLE void create(const QString &name);
    Q_INVOKABLE void cancelCreate();

    Q_INVOKABLE void beginDrag(const QString &trackId);
    // Adds the song to the playlist and says so in the banner.
    Q_INVOKABLE void drop(const QString &trackId, const QString &playlistId);
    void drop(const Track &track, const QUuid &playlistId);

Q_SIGNALS:
    void entriesChanged();
    void showingCreateChanged();
    void draggingTrackChanged();

private:
    void setDraggingTrack(const std::optional<Track> &track);

    PlaylistStore &m_store;
    Banner &m_banner;
    SongLookup m_lookup;
    bool m_showingCreate = false;
    std::optional<Track> m_draggingTrack;
};
