// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RowListModel.h"
#include "TrackIndex.h"

#include <QObject>
#include <QSet>
#include <QUuid>
#include <QVariantMap>

// Owns the current search index on the GUI thread. add() reads the tags of
// new songs on the thread pool and returns at once; when the build finishes,
// the index with the new songs at its end replaces the current one in one
// step, and songsIndexed tells which entries are new. retain() drops the
// entries of songs that left the library, on the pool too, without reading a
// tag (songsRemoved). One build runs at a time: songs added or dropped
// meanwhile wait for the next. Until a build lands, queries answer from the
// previous index.
class SearchIndex : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY indexChanged)
    Q_PROPERTY(bool isBuilding READ isBuilding NOTIFY isBuildingChanged)
    // Every artist name (role "name"), in the order allArtistNames() gives;
    // new artists are inserted, so views keep the rows they show.
    Q_PROPERTY(RowListModelBase *artists READ artists CONSTANT)

public:
    explicit SearchIndex(QObject *parent = nullptr);
    explicit SearchIndex(MetadataReader reader, QObject *parent = nullptr);

    void add(const QList<Track> &songs);
    // The library is now these songs: the entries (and songs waiting to be
    // indexed) of any other go.
    void retain(const QList<Track> &songs);
    // The song's tags changed on disk: its entry is read again (and moves to the end).
    void reindex(const Track &song);

    const TrackIndex &trackIndex() const { return m_index; }
    int count() const { return int(m_index.size()); }
    bool isBuilding() const { return m_building; }

    SearchResults results(const QString &searchText) const;
    QStringList allArtistNames() const;
    RowListModelBase *artists() { return &m_artists; }
    // The names of `names` that some song of the index has for artist
    // (ignoring case), in their order.
    Q_INVOKABLE QStringList knownArtists(const QStringList &names) const;
    std::optional<QString> artistForTrack(const QUuid &trackId) const;

    // The results as SearchResults::toVariantMap() gives them.
    Q_INVOKABLE QVariantMap search(const QString &searchText) const;

Q_SIGNALS:
    void indexChanged();
    void isBuildingChanged();
    // Entries [first, first + count) of the index are new.
    void songsIndexed(int first, int count);
    // Entries of songs that left the library are gone; the rest keep their order.
    void songsRemoved();

private:
    void startBuild();
    void finishBuild();
    void setIndex(const TrackIndex &index);

    MetadataReader m_reader;
    TrackIndex m_index;
    QList<Track> m_waiting;
    QList<Track> m_inFlight;
    QSet<QUuid> m_removed;
    bool m_building = false;
    RowListModel<QString> m_artists;
};
