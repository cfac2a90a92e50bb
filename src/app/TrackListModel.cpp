// SPDX-License-Identifier: GPL-3.0-or-later
#include "TrackListModel.h"

#include "model/TextUtil.h"

TrackListModel::TrackListModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

void TrackListModel::setTracks(const QList<Track> &tracks)
{
    const qsizetype shown = m_tracks.size();
    const bool sameData = tracks.constData() == m_tracks.constData() && tracks.size() == shown;
    if (sameData)
        return;
    // Only grew at its end: the rows shown stay as they are.
    const bool grew = tracks.size() > shown
        && std::equal(m_tracks.cbegin(), m_tracks.cend(), tracks.cbegin(),
                      [](const Track &a, const Track &b) { return a.id == b.id; });
    if (grew) {
        beginInsertRows({}, int(shown), int(tracks.size() - 1));
        m_tracks = tracks;
        endInsertRows();
    } else {
        const bool same = tracks.size() == shown
            && std::equal(m_tracks.cbegin(), m_tracks.cend(), tracks.cbegin(),
                          [](const Track &a, const Track &b) { return a.id == b.id && a.url == b.url; });
        if (same)
            return;
        beginResetModel();
        m_tracks = tracks;
        endResetModel();
    }
    Q_EMIT countChanged();
}

int TrackListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_tracks.size());
}

QVariant TrackListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Track &track = m_tracks.at(index.row());
    switch (role) {
    case TrackIdRole:
        return trackjson::uuidText(track.id);
    case Qt::DisplayRole:
    case NameRole:
        return text::displayName(track.path());
    case PathRole:
        return track.path();
    default:
        return {};
    }
}

QHash<int, QByteArray> TrackListModel::roleNames() const
{
    return {{TrackIdRole, "trackId"}, {NameRole, "name"}, {PathRole, "path"}};
}
