// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AlbumListModel.h"
#include "SongListModel.h"

#include <QObject>

// The detail of one artist: its songs with their album tags, sorted by file
// name, the albums made of them, and the songs to list under the album
// filter. load() reads the tags on the thread pool; a new load supersedes a
// running one. selectedAlbum is empty when no album is selected.
class ArtistDetail : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString artistName READ artistName NOTIFY artistNameChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(QString selectedAlbum READ selectedAlbum WRITE setSelectedAlbum NOTIFY selectedAlbumChanged)
    Q_PROPERTY(AlbumListModel *albums READ albums CONSTANT)
    Q_PROPERTY(SongListModel *tracks READ tracks CONSTANT)

public:
    explicit ArtistDetail(QObject *parent = nullptr);
    explicit ArtistDetail(MetadataReader reader, QObject *parent = nullptr);

    void load(const QString &artistName, const QList<Track> &artistTracks);

    QString artistName() const { return m_artistName; }
    bool isLoading() const { return m_loading; }
    QString selectedAlbum() const { return m_selectedAlbum; }
    void setSelectedAlbum(const QString &album);

    // Selects an album and answers the song to play: its first in file-name
    // order, absent when the artist has no such album.
    std::optional<Track> selectAlbum(const QString &album);

    AlbumListModel *albums() { return &m_albums; }
    // The songs under the album filter (visibleTracks).
    SongListModel *tracks() { return &m_visible; }

Q_SIGNALS:
    void artistNameChanged();
    void isLoadingChanged();
    void selectedAlbumChanged();
    void loaded();

private:
    void setLoading(bool loading);

    MetadataReader m_reader;
    QString m_artistName;
    QString m_selectedAlbum;
    // All the artist's songs, unfiltered.
    QList<TrackInfo> m_infos;
    AlbumListModel m_albums;
    SongListModel m_visible;
    CancelFlag m_cancelRunning;
    quint64 m_generation = 0;
    bool m_loading = false;
};
