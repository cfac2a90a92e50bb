// SPDX-License-Identifier: GPL-3.0-or-later
#include "SongListModel.h"

#include "DeliverLater.h"
#include "model/TextUtil.h"

#include <QtConcurrent>

#include <cmath>

namespace {

QList<RowListModel<TrackInfo>::Column> songColumns()
{
    // Artist and duration come from the file: SongListModel::data() answers them.
    const auto fromFile = [](const TrackInfo &) { return QVariant(); };
    return {
        {"trackId", [](const TrackInfo &row) { return QVariant(trackjson::uuidText(row.track.id)); }},
        {"name", [](const TrackInfo &row) { return QVariant(text::displayName(row.track.path())); }},
        {"path", [](const TrackInfo &row) { return QVariant(row.track.path()); }},
        {"album", [](const TrackInfo &row) { return QVariant(row.album.value_or(QString())); }},
        {"artist", fromFile},
        {"duration", fromFile},
    };
}

bool sameSong(const TrackInfo &a, const TrackInfo &b)
{
    return a.track.id == b.track.id && a.track.url == b.track.url && a.album == b.album;
}

} // namespace

SongListModel::SongListModel(QObject *parent)
    : SongListModel(&readTrackInfo, parent)
{
}

SongListModel::SongListModel(InfoReader reader, QObject *parent)
    : RowListModel<TrackInfo>(songColumns(), &sameSong, parent)
    , m_reader(std::move(reader))
{
}

namespace {

QList<TrackInfo> rowsOf(const QList<Track> &tracks)
{
    QList<TrackInfo> rows;
    rows.reserve(tracks.size());
    for (const Track &track : tracks)
        rows.append(TrackInfo{track, std::nullopt});
    return rows;
}

} // namespace

void SongListModel::setTracks(const QList<Track> &tracks)
{
    setRows(rowsOf(tracks));
}

void SongListModel::appendTracks(const QList<Track> &tracks)
{
    appendRows(rowsOf(tracks));
}

QList<Track> SongListModel::tracks() const
{
    QList<Track> out;
    out.reserve(rows().size());
    for (const TrackInfo &row : rows())
        out.append(row.track);
    return out;
}

QVariant SongListModel::data(const QModelIndex &index, int role) const
{
    if ((role != ArtistRole && role != DurationRole)
        || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return RowListModel<TrackInfo>::data(index, role);
    const FileInfo *info = fileInfo(index.row());
    if (role == ArtistRole)
        return info ? info->artist : QString();
    return info ? info->duration : 0.0;
}

const SongListModel::FileInfo *SongListModel::fileInfo(int row) const
{
    const Track &track = rows().at(row).track;
    const auto it = m_info.constFind(track.id);
    if (it != m_info.cend())
        return &*it;
    if (m_asked.contains(track.id))
        return nullptr;
    m_asked.insert(track.id);
    if (m_requests.isEmpty())
        QMetaObject::invokeMethod(const_cast<SongListModel *>(this), &SongListModel::readRequests, Qt::QueuedConnection);
    m_requests.append({track.id, track.path(), row});
    return nullptr;
}

void SongListModel::readRequests()
{
    QList<Request> requests = std::exchange(m_requests, {});
    if (requests.isEmpty())
        return;
    const quint64 generation = m_generation;
    auto read = [reader = m_reader, requests = std::move(requests)] {
        QList<Answer> answers;
        answers.reserve(requests.size());
        for (const Request &request : requests) {
            const FileTags tags = reader(request.path);
            const double seconds = tags.duration.value_or(0);
            answers.append({request, FileInfo{tags.metadata.artist.value_or(QString()),
                                              std::isfinite(seconds) && seconds > 0 ? seconds : 0}});
        }
        return answers;
    };
    deliverLater(QtConcurrent::run(std::move(read)), this,
                 [this, generation](const QList<Answer> &answers) { deliver(answers, generation); });
}

void SongListModel::deliver(const QList<Answer> &answers, quint64 generation)
{
    if (generation != m_generation)
        return;
    // Rows are found where they were asked for; only rows that moved since
    // (the list was replaced meanwhile) cost a search.
    const QList<int> roles{ArtistRole, DurationRole};
    QSet<QUuid> moved;
    for (const Answer &answer : answers) {
        const QUuid &id = answer.request.id;
        m_info.insert(id, answer.info);
        m_asked.remove(id);
        const qsizetype row = answer.request.rowHint;
        if (row < rows().size() && rows().at(row).track.id == id)
            Q_EMIT dataChanged(index(int(row)), index(int(row)), roles);
        else
            moved.insert(id);
    }
    if (!moved.isEmpty())
        rowsChanged([&moved](const TrackInfo &row) { return moved.contains(row.track.id); }, roles);
}

void SongListModel::forgetFileInfo()
{
    ++m_generation;
    m_info.clear();
    m_asked.clear();
    m_requests.clear();
    if (!rows().isEmpty())
        Q_EMIT dataChanged(index(0), index(int(rows().size()) - 1), {ArtistRole, DurationRole});
}
