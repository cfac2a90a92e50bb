// SPDX-License-Identifier: GPL-3.0-or-later
#include "TrackInfoListModel.h"

#include "model/TextUtil.h"

TrackInfoListModel::TrackInfoListModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

void TrackInfoListModel::setTrackInfos(const QList<TrackInfo> &infos)
{
    const int before = count();
    beginResetModel();
    m_infos = infos;
    endResetModel();
    if (count() != before)
        Q_EMIT countChanged();
}

int TrackInfoListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant TrackInfoListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const TrackInfo &info = m_infos.at(index.row());
    switch (role) {
    case TrackIdRole:
        return trackjson::uuidText(info.track.id);
    case UrlRole:
        return info.track.url;
    case Qt::DisplayRole:
    case NameRole:
        return text::displayName(info.track.path());
    case AlbumRole:
        return info.album.value_or(QString());
    case PathRole:
        return info.track.path();
    default:
        return {};
    }
}

QHash<int, QByteArray> TrackInfoListModel::roleNames() const
{
    return { { TrackIdRole, "trackId" }, { UrlRole, "url" }, { NameRole, "name" }, { AlbumRole, "album" }, { PathRole, "path" } };
}
