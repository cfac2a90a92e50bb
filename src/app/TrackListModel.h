// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/Track.h"

#include <QAbstractListModel>
#include <QList>
#include <QtQml/qqmlregistration.h>

#include <functional>

// A list of songs for a song list: the rows know a song's id, its display
// name and its file; everything read from the file (picture, length, artist)
// is loaded by the row itself when it is shown (TrackRowInfo).
//
// setTracks() compares with what is shown: a list that only grew at its end
// inserts rows, so a library of 100,000 songs that gains a few keeps its
// scroll position and builds no delegate again.
class TrackListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { TrackIdRole = Qt::UserRole + 1, NameRole, PathRole };

    explicit TrackListModel(QObject *parent = nullptr);

    void setTracks(const QList<Track> &tracks);
    const QList<Track> &tracks() const { return m_tracks; }
    int count() const { return int(m_tracks.size()); }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    QList<Track> m_tracks;
};
