// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "TrackIndex.h"

#include <QObject>
#include <QVariantMap>

// Owns the current search index on the GUI thread. rebuild() reads the tags
// of a snapshot of the library on the thread pool and returns at once; when a
// build finishes, its index replaces the current one in one step. Builds are
// never cancelled: when two overlap, each replaces the index as it finishes,
// so the one that finishes last stays. Until then queries answer from the
// previous index.
class SearchIndex : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY indexChanged)
    Q_PROPERTY(bool isBuilding READ isBuilding NOTIFY isBuildingChanged)
    Q_PROPERTY(QStringList allArtistNames READ allArtistNames NOTIFY indexChanged)

public:
    explicit SearchIndex(QObject *parent = nullptr);
    explicit SearchIndex(MetadataReader reader, QObject *parent = nullptr);

    void rebuild(const QList<Track> &tracks);

    const TrackIndex &trackIndex() const { return m_index; }
    int count() const { return int(m_index.size()); }
    bool isBuilding() const { return m_running > 0; }

    SearchResults results(const QString &searchText) const;
    QStringList allArtistNames() const;
    std::optional<QString> artistForTrack(const QUuid &trackId) const;

    // The results as SearchResults::toVariantMap() gives them.
    Q_INVOKABLE QVariantMap search(const QString &searchText) const;

Q_SIGNALS:
    void indexChanged();
    void isBuildingChanged();

private:
    MetadataReader m_reader;
    TrackIndex m_index;
    int m_running = 0;
};
