// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Grouping.h"

#include <QAbstractListModel>

// Songs of an artist as the detail screen lists them, each with its album.
class TrackInfoListModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { TrackIdRole = Qt::UserRole + 1, UrlRole, NameRole, AlbumRole, PathRole };

    explicit TrackInfoListModel(QObject *parent = nullptr);

    void setTrackInfos(const QList<TrackInfo> &infos);
    const QList<TrackInfo> &trackInfos() const { return m_infos; }
    int count() const { return int(m_infos.size()); }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    QList<TrackInfo> m_infos;
};
