// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "browse/SongListModel.h"
#include "model/Track.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

class Library;
class Navigation;
class PlaylistStore;

// The songs next and previous walk through and the song list shows: the
// selected playlist's, else the library. It follows the library, the
// selection and the playlists; the song list's rows are its model.
class CurrentQueue : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(SongListModel *model READ model CONSTANT)
    // The selected playlist's name, else "All Songs".
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(bool isPlaylist READ isPlaylist NOTIFY changed)

public:
    CurrentQueue(const Library &library, const Navigation &navigation, const PlaylistStore &playlists,
                 QObject *parent = nullptr);

    QList<Track> tracks() const;
    SongListModel *model() { return &m_model; }
    QString title() const;
    bool isPlaylist() const;

Q_SIGNALS:
    void changed();

private:
    void refresh();

    const Library &m_library;
    const Navigation &m_navigation;
    const PlaylistStore &m_playlists;
    SongListModel m_model;
};
