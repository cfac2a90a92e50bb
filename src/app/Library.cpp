// SPDX-License-Identifier: GPL-3.0-or-later
#include "Library.h"

#include "LibraryImport.h"
#include "library/FolderMonitor.h"
#include "model/LocalPath.h"
#include "model/Log.h"

#include <QTimer>
#include <QtConcurrent>

Library::Library(FolderMonitor &monitor, QObject *parent)
    : QObject(parent)
    , m_monitor(monitor)
{
    connect(&m_monitor, &FolderMonitor::discoveredURLsChanged, this,
            [this] { addDiscoveredFiles(m_monitor.discoveredURLs()); });
    m_monitor.setKnownFiles([this](const QUrl &file) { return m_trackUrls.contains(file); });
}

std::optional<Track> Library::find(const QUuid &id) const
{
    const auto it = m_trackPositions.constFind(id);
    return it == m_trackPositions.cend() ? std::nullopt : std::optional<Track>(m_tracks.at(*it));
}

void Library::append(QList<Track> tracks)
{
    if (tracks.isEmpty())
        return;
    const auto first = int(m_tracks.size());
    const auto count = int(tracks.size());
    const qsizetype total = m_tracks.size() + count;
    ++m_trackUrlsGeneration;
    // An import has made room for all its songs already.
    if (m_trackPositions.capacity() < total)
        m_trackPositions.reserve(total);
    if (m_trackUrls.capacity() < total)
        m_trackUrls.reserve(total);
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        m_trackPositions.insert(tracks.at(i).id, first + i);
        // An import's songs are there already; asking first leaves the set
        // shared with the scan's result rather than copying it.
        if (!m_trackUrls.contains(tracks.at(i).url))
            m_trackUrls.insert(tracks.at(i).url);
    }
    m_tracks.append(std::move(tracks));
    Q_EMIT tracksAppended(first, count);
    Q_EMIT tracksChanged();
}

void Library::importFolder(const QUrl &folder)
{
    if (!folder.isLocalFile()) {
        qCWarning(lcApp) << "not a local folder, not imported:" << folder;
        return;
    }
    m_importQueue.append(folder);
    startNextImport();
}

void Library::importFolders(const QList<QUrl> &folders)
{
    for (const QUrl &folder : folders)
        importFolder(folder);
}

void Library::startNextImport()
{
    if (m_importRunning || m_importQueue.isEmpty())
        return;
    const QUrl folder = m_importQueue.takeFirst();
    m_importRunning = true;
    m_runningImport = folder;
    m_runningForgotten = false;
    Q_EMIT importingChanged();
    // A large folder takes a while to list, and ten thousand new songs take a
    // while to sort out and name: the window stays responsive meanwhile.
    const quint64 knownGeneration = m_trackUrlsGeneration;
    QtConcurrent::run([folder, urls = m_trackUrls]() mutable {
        ScannedFolder scanned;
        scanned.found = scanFolder(folder, &scanned.folders);
        if (urls.isEmpty())
            urls.reserve(scanned.found.size());
        const QList<QUrl> fresh = import::takeFreshFiles(scanned.found, urls);
        scanned.fresh.reserve(fresh.size());
        for (const QUrl &url : fresh)
            scanned.fresh.append(Track::create(url));
        scanned.urls = std::move(urls);
        return scanned;
    }).then(this, [this, knownGeneration](ScannedFolder scanned) {
        if (m_runningForgotten) {
            scanned.fresh.clear();
        } else if (knownGeneration == m_trackUrlsGeneration && !scanned.fresh.isEmpty()) {
            m_trackUrls = std::move(scanned.urls);
        } else if (knownGeneration != m_trackUrlsGeneration) {
            // Songs the folder monitor added meanwhile are not added twice.
            scanned.fresh.removeIf([this](const Track &t) { return m_trackUrls.contains(t.url); });
        }
        m_scannedFiles = scanned.found.size();
        m_scannedFolders = std::move(scanned.folders);
        m_scanned = std::move(scanned.fresh);
        // With room to spare for songs found later, so that the first of them
        // doesn't move the whole list to new memory.
        const qsizetype songs = m_tracks.size() + m_scanned.size();
        m_tracks.reserve(songs + songs / 16);
        m_trackPositions.reserve(m_tracks.capacity());
        appendScanned();
    });
}

void Library::appendScanned()
{
    // A slice costs its listeners (song list, search index) a few milliseconds,
    // twice that while the pool reads tags on every core.
    constexpr qsizetype slice = 2048;
    if (m_scannedNext < m_scanned.size()) {
        const qsizetype count = std::min(slice, m_scanned.size() - m_scannedNext);
        append(m_scanned.mid(m_scannedNext, count));
        m_scannedNext += count;
    }
    if (m_scannedNext < m_scanned.size())
        QTimer::singleShot(0, this, &Library::appendScanned);
    else
        finishImport();
}

void Library::finishImport()
{
    const QUrl folder = m_runningImport;
    const qsizetype added = std::exchange(m_scannedNext, 0);
    m_scanned.clear();
    // The import's listing of the tree tells the monitor what to watch.
    const QStringList folders = std::exchange(m_scannedFolders, {});
    if (!m_runningForgotten)
        m_monitor.watch(folder, folders);
    qCInfo(lcApp).nospace() << "imported " << localpath::pathOf(folder) << ": " << m_scannedFiles << " audio files, "
                            << added << " new";
    m_importRunning = false;
    Q_EMIT folderImported(folder, int(added));
    if (m_importQueue.isEmpty())
        Q_EMIT importingChanged();
    else
        startNextImport();
}

void Library::addDiscoveredFiles(const QList<QUrl> &urls)
{
    if (urls.isEmpty())
        return;
    const QList<QUrl> fresh = import::takeFreshFiles(urls, m_trackUrls);
    const auto first = int(m_tracks.size());
    QList<Track> songs;
    songs.reserve(fresh.size());
    for (const QUrl &url : fresh)
        songs.append(Track::create(url));
    append(std::move(songs));
    m_monitor.clearDiscoveredURLs();
    if (!fresh.isEmpty())
        Q_EMIT filesDiscovered(first, int(fresh.size()));
}

void Library::forgetFolder(const QUrl &folder)
{
    m_importQueue.removeAll(folder);
    if (m_importRunning && m_runningImport == folder) {
        m_runningForgotten = true;
        m_scanned.clear();
    }
    m_monitor.unwatch(folder);
    const QString root = localpath::pathOf(folder);
    const QList<QUrl> &kept = m_monitor.watchedFolders();
    const auto stillImported = [&kept](const QString &path) {
        return std::any_of(kept.cbegin(), kept.cend(),
                           [&path](const QUrl &other) { return isInside(path, localpath::pathOf(other)); });
    };
    const qsizetype removed = m_tracks.removeIf([&](const Track &t) {
        const QString path = t.path();
        return isInside(path, root) && !stillImported(path);
    });
    if (removed > 0) {
        m_trackUrls.clear();
        m_trackPositions.clear();
        for (qsizetype i = 0; i < m_tracks.size(); ++i) {
            m_trackUrls.insert(m_tracks.at(i).url);
            m_trackPositions.insert(m_tracks.at(i).id, i);
        }
        ++m_trackUrlsGeneration;
        Q_EMIT tracksChanged();
    }
    qCInfo(lcApp).nospace() << "forgot " << root << ": " << removed << " songs removed";
    Q_EMIT folderForgotten(folder, int(removed));
}
