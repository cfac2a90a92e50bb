// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Grouping.h"

#include <QAbstractListModel>

// The album cards of one artist, in album order, with the selected one marked.
class AlbumListModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { NameRole = Qt::UserRole + 1, TrackCountRole, IsSelectedRole };

    explicit AlbumListModel(QObject *parent = nullptr);

    void setAlbums(const QList<AlbumGroup> &albums);
    void setSelectedAlbum(const QString &name);

    const QList<AlbumGroup> &albums() const { return m_albums; }
    int count() const { return int(m_albums.size()); }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    QList<AlbumGroup> m_albums;
    QString m_selected;
};
