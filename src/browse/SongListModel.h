// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Grouping.h"
#include "RowListModel.h"
#include "tags/TagReader.h"

#include <QHash>
#include <QSet>
#include <QUuid>

#include <functional>

// The rows of a song list: the current queue, or one artist's songs with their
// album tags. A row shows its id, display name, file and album from what it is
// given, and the artist tag and length read from its file.
//
//   view reads artist / duration of a row ─► not read yet: the file joins the
//     requests; at the next turn of the event loop the requests are read on
//     the thread pool, together ─► answers kept per song ─► dataChanged
//
// So only rows that are shown cost a file read, and each song is read once
// until forgetFileInfo() (its tags were written).
class SongListModel : public RowListModel<TrackInfo>
{
    Q_OBJECT

public:
    enum Role { TrackIdRole = firstRole, NameRole, PathRole, AlbumRole, ArtistRole, DurationRole };

    // How a row's file is read; called on pool threads.
    using InfoReader = std::function<FileTags(const QString &path)>;

    explicit SongListModel(QObject *parent = nullptr);
    explicit SongListModel(InfoReader reader, QObject *parent = nullptr);

    // Rows without album.
    void setTracks(const QList<Track> &tracks);
    void appendTracks(const QList<Track> &tracks);
    QList<Track> tracks() const;

    // The files may have changed: shown rows read them again.
    void forgetFileInfo();

    QVariant data(const QModelIndex &index, int role) const override;

private:
    struct FileInfo
    {
        QString artist;
        double duration = 0; // 0 when unknown
    };
    struct Request
    {
        QUuid id;
        QString path;
        qsizetype rowHint;
    };
    struct Answer
    {
        Request request;
        FileInfo info;
    };

    // The answer for a row, or nullptr after asking for it.
    const FileInfo *fileInfo(int row) const;
    void readRequests();
    void deliver(const QList<Answer> &answers, quint64 generation);

    InfoReader m_reader;
    QHash<QUuid, FileInfo> m_info;
    // Asked for, not answered yet, and the requests not yet sent to the pool.
    mutable QSet<QUuid> m_asked;
    mutable QList<Request> m_requests;
    // Answers to reads started before forgetFileInfo() are dropped.
    quint64 m_generation = 0;
};
