// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlaylistStore.h"

#include "Log.h"
#include "TextUtil.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

PlaylistStore::PlaylistStore(QObject *parent)
    : PlaylistStore(defaultSaveFile(), parent)
{
}

PlaylistStore::PlaylistStore(const QString &saveFile, QObject *parent)
    : QObject(parent)
    , m_saveFile(saveFile)
{
    if (!QDir().mkpath(QFileInfo(m_saveFile).absolutePath()))
        qCWarning(lcModel) << "cannot create the folder of" << m_saveFile;
    load();
}

QString PlaylistStore::defaultSaveFile()
{
    QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (base.isEmpty())
        base = QDir::tempPath();
    return base + QStringLiteral("/Tarnwell/playlists.json");
}

const Playlist *PlaylistStore::playlist(const QUuid &id) const
{
    for (const Playlist &p : m_playlists) {
        if (p.id == id)
            return &p;
    }
    return nullptr;
}

void PlaylistStore::createPlaylist(const QString &name)
{
    const QString trimmed = text::trimmedHorizontal(name);
    if (trimmed.isEmpty())
        return;
    m_playlists.append(Playlist{QUuid::createUuid(), trimmed, {}});
    Q_EMIT playlistsChanged();
    save();
}

bool PlaylistStore::addTrack(const Track &track, const QUuid &playlistId)
{
    for (Playlist &p : m_playlists) {
        if (p.id != playlistId)
            continue;
        if (p.contains(track.id))
            return false;
        p.tracks.append(track);
        Q_EMIT playlistsChanged();
        save();
        return true;
    }
    return false;
}

void PlaylistStore::load()
{
    QFile file(m_saveFile);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcModel) << "cannot read" << m_saveFile << file.errorString();
        m_fileUnreadable = true;
        return;
    }
    auto decoded = playlistjson::decode(file.readAll());
    if (!decoded) {
        qCWarning(lcModel) << m_saveFile << "does not hold a list of playlists; it is kept aside at the next save";
        m_fileUnreadable = true;
        return;
    }
    m_playlists = std::move(*decoded);
}

bool PlaylistStore::moveUnreadableFileAside()
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside = m_saveFile + QStringLiteral(".unreadable-") + stamp;
    for (int n = 2; QFile::exists(aside); ++n)
        aside = m_saveFile + QStringLiteral(".unreadable-") + stamp + u'-' + QString::number(n);
    if (!QFile::rename(m_saveFile, aside) && QFile::exists(m_saveFile)) {
        qCWarning(lcModel) << "cannot move" << m_saveFile << "aside; not overwriting it";
        return false;
    }
    qCInfo(lcModel) << "kept the unreadable playlists file as" << aside;
    return true;
}

void PlaylistStore::save()
{
    const auto bytes = playlistjson::encode(m_playlists);
    if (!bytes) {
        qCWarning(lcModel) << "playlists not saved: a track has a duration that is not a number";
        return;
    }
    if (m_fileUnreadable) {
        if (!moveUnreadableFileAside())
            return;
        m_fileUnreadable = false;
    }
    // Written through a temporary file and renamed, so a crash or a full disk
    // never leaves a half-written list behind.
    QSaveFile file(m_saveFile);
    if (!file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size() || !file.commit())
        qCWarning(lcModel) << "cannot write" << m_saveFile << file.errorString();
}
