// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The library model: songs and playlists.
//
//   Track ── one audio file (id, file URL, duration); JSON form in Track.h
//   TrackMetadata ── tags read from a file (tags/), never stored
//   Playlist ── a name and copies of Tracks
//   PlaylistStore ── the playlists, loaded once from playlists.json in the data
//                    folder and rewritten whole after every change
//
// Everything here lives on the GUI thread.

#include "Playlist.h"

#include <QObject>
#include <QString>

class PlaylistStore : public QObject
{
    Q_OBJECT

public:
    // The store in the per-user data folder: <GenericDataLocation>/Tarnwell/playlists.json.
    explicit PlaylistStore(QObject *parent = nullptr);
    // The store at an explicit file (tests, tools).
    explicit PlaylistStore(const QString &saveFile, QObject *parent = nullptr);

    static QString defaultSaveFile();

    const QList<Playlist> &playlists() const { return m_playlists; }
    QString saveFile() const { return m_saveFile; }
    const Playlist *playlist(const QUuid &id) const;

    // Adds an empty playlist named after the trimmed name; a blank name adds nothing.
    void createPlaylist(const QString &name);
    // Appends a copy of the track; false when there is no such playlist or it
    // already holds a track with that id.
    bool addTrack(const Track &track, const QUuid &playlistId);

Q_SIGNALS:
    void playlistsChanged();

private:
    void load();
    void save();
    bool moveUnreadableFileAside();

    QString m_saveFile;
    QList<Playlist> m_playlists;
    // The file on disk holds content we could not read; keep it before overwriting.
    bool m_fileUnreadable = false;
};
