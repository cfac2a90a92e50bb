// SPDX-License-Identifier: GPL-3.0-or-later
#include "AlbumListModel.h"

AlbumListModel::AlbumListModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

void AlbumListModel::setAlbums(const QList<AlbumGroup> &albums)
{
    const int before = count();
    beginResetModel();
    m_albums = albums;
    endResetModel();
    if (count() != before)
        Q_EMIT countChanged();
}

void AlbumListModel::setSelectedAlbum(const QString &name)
{
    if (m_selected == name)
        return;
    const QString previous = m_selected;
    m_selected = name;
    for (int row = 0; row < count(); ++row) {
        const QString &album = m_albums.at(row).name;
        if (sameAlbumName(album, previous) || sameAlbumName(album, name))
            Q_EMIT dataChanged(index(row), index(row), { IsSelectedRole });
    }
}

int AlbumListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant AlbumListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const AlbumGroup &album = m_albums.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return album.name;
    case TrackCountRole:
        return int(album.tracks.size());
    case IsSelectedRole:
        return !m_selected.isEmpty() && sameAlbumName(album.name, m_selected);
    default:
        return {};
    }
}

QHash<int, QByteArray> AlbumListModel::roleNames() const
{
    return { { NameRole, "name" }, { TrackCountRole, "trackCount" }, { IsSelectedRole, "isSelected" } };
}
