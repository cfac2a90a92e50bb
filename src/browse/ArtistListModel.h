// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Grouping.h"
#include "RowListModel.h"

// The artists grid: the library's songs grouped by artist, sorted by name.
// load() reads the tags on the thread pool; a new load supersedes a running
// one, whose result is dropped, so the list shown is always that of the latest
// load. isLoading stays set until that load has published.
class ArtistListModel : public RowListModel<ArtistGroup>
{
    Q_OBJECT
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)

public:
    enum Role { NameRole = firstRole, TrackCountRole };

    explicit ArtistListModel(QObject *parent = nullptr);
    explicit ArtistListModel(MetadataReader reader, QObject *parent = nullptr);

    void load(const QList<Track> &tracks);

    bool isLoading() const { return m_loading; }

    // The row of the artist named exactly `name`, -1 when there is none (then
    // the grid is shown rather than an artist's detail).
    Q_INVOKABLE int indexOf(const QString &name) const;
    // The songs of the artist named exactly `name`; empty when there is none.
    QList<Track> tracksOf(const QString &name) const;

Q_SIGNALS:
    void isLoadingChanged();
    void loaded();

private:
    void setLoading(bool loading);

    MetadataReader m_reader;
    CancelFlag m_cancelRunning;
    quint64 m_generation = 0;
    bool m_loading = false;
};
