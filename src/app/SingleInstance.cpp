// SPDX-License-Identifier: GPL-3.0-or-later
#include "SingleInstance.h"

#include "AppState.h"
#include "library/FolderScan.h"
#include "model/LocalPath.h"
#include "model/Log.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusReply>
#include <QQuickWindow>

#include <algorithm>
#include <cstdio>
#include <utility>

#include <sys/stat.h>

namespace {

constexpr auto applicationInterface = "org.freedesktop.Application";
// The running program answers at once (the work happens afterwards), so a
// longer wait means it is stuck.
constexpr int handOffTimeoutMs = 10000;

struct LocalEntry
{
    QUrl url;
    bool isFolder = false;
};

// A folder, or a file the library would hold, as the scan will spell it: the
// folder's real path, so that the song found by the import is the one meant.
// By the name's bytes, which need not be UTF-8.
std::optional<LocalEntry> localEntry(const QUrl &url)
{
    const QString path = localpath::pathOf(url);
    if (path.isEmpty())
        return std::nullopt;
    struct stat st;
    if (::stat(localpath::toBytes(path).constData(), &st) != 0)
        return std::nullopt;
    if (S_ISDIR(st.st_mode))
        return LocalEntry { localpath::fileUrl(localpath::canonical(path)), true };
    const QString absolute = localpath::absolute(path);
    const qsizetype slash = absolute.lastIndexOf(u'/');
    const QString name = absolute.sliced(slash + 1);
    if (!S_ISREG(st.st_mode) || !hasAudioExtension(name))
        return std::nullopt;
    QString folder = localpath::canonical(slash > 0 ? absolute.first(slash) : QStringLiteral("/"));
    if (!folder.endsWith(u'/'))
        folder += u'/';
    return LocalEntry { localpath::fileUrl(folder + name), false };
}

bool holds(const QUrl &folder, const QUrl &file)
{
    QByteArray prefix = localpath::bytesOf(folder);
    if (!prefix.endsWith('/'))
        prefix += '/';
    return localpath::bytesOf(file).startsWith(prefix);
}

} // namespace

SingleInstance::SingleInstance(QObject *parent)
    : QObject(parent)
{
}

SingleInstance::~SingleInstance()
{
    if (!m_registered)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(QString::fromLatin1(objectPath));
    bus.unregisterService(QString::fromLatin1(serviceName));
}

bool SingleInstance::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCInfo(lcApp) << "no session bus: a second start opens a window of its own";
        return true;
    }
    // The object is in place before the name is, so that a request arriving
    // right after the name was taken finds it.
    const QString path = QString::fromLatin1(objectPath);
    if (!bus.registerObject(path, this, QDBusConnection::ExportScriptableSlots)) {
        qCWarning(lcApp) << "cannot offer" << path << "on the session bus:" << bus.lastError().message();
        return true;
    }
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply
        = bus.interface()->registerService(QString::fromLatin1(serviceName),
            QDBusConnectionInterface::DontQueueService, QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered) {
        m_registered = true;
        return true;
    }
    bus.unregisterObject(path);
    if (!reply.isValid()) {
        qCWarning(lcApp) << "cannot take the name" << serviceName << ":" << reply.error().message();
        return true;
    }
    return false;
}

bool SingleInstance::handOff(const QList<QUrl> &urls)
{
    // The desktop's token for this start lets the running window come forward.
    QVariantMap platformData;
    if (const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"); !token.isEmpty())
        platformData.insert(QStringLiteral("activation-token"), token);
    if (const QString id = qEnvironmentVariable("DESKTOP_STARTUP_ID"); !id.isEmpty())
        platformData.insert(QStringLiteral("desktop-startup-id"), id);

    QDBusMessage call = QDBusMessage::createMethodCall(QString::fromLatin1(serviceName),
        QString::fromLatin1(objectPath), QString::fromLatin1(applicationInterface),
        urls.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
    if (!urls.isEmpty()) {
        QStringList uris;
        for (const QUrl &url : urls)
            uris.append(url.toString(QUrl::FullyEncoded));
        call << uris;
    }
    call << platformData;
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, handOffTimeoutMs);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        std::fprintf(
            stderr, "tarnwell: the running Tarnwell does not answer: %s\n", qPrintable(reply.errorMessage()));
        // It may have quit meanwhile: then this start takes its place.
        claim();
        return false;
    }
    qCInfo(lcApp) << "handed" << urls.size() << "folders and songs to the running Tarnwell";
    return true;
}

void SingleInstance::attach(AppState &state, QQuickWindow *window)
{
    m_state = &state;
    m_window = window;
    connect(state.library(), &Library::folderImported, this, &SingleInstance::onFolderImported);
    const auto start = [this] {
        if (std::exchange(m_ready, true))
            return;
        for (const QList<QUrl> &urls : std::exchange(m_pending, {}))
            open(urls);
    };
    if (!window) {
        start();
        return;
    }
    // Imports start once the window is up, so that they never delay its first
    // frame. Queued: frames may be swapped several times before this runs once.
    connect(window, &QQuickWindow::frameSwapped, this, start, Qt::QueuedConnection);
}

void SingleInstance::open(const QList<QUrl> &urls)
{
    if (!m_ready) {
        m_pending.append(urls);
        return;
    }
    const OpenPlan plan = planOpen(urls);
    m_state->library()->importFolders(plan.folders);
    if (!plan.song)
        return;
    // The newest request decides what plays.
    m_song.reset();
    if (playIfInLibrary(*plan.song))
        return;
    m_song = plan.song;
    m_songFolder = plan.songFolder;
}

void SingleInstance::onFolderImported(const QUrl &folder)
{
    if (!m_song || folder != m_songFolder)
        return;
    const QUrl song = *std::exchange(m_song, std::nullopt);
    if (!playIfInLibrary(song))
        qCWarning(lcApp) << "not in the library after its folder was imported:" << localpath::readable(localpath::pathOf(song));
}

bool SingleInstance::playIfInLibrary(const QUrl &song)
{
    for (const Track &track : m_state->library()->tracks()) {
        if (track.url == song) {
            m_state->nowPlaying()->play(track);
            return true;
        }
    }
    return false;
}

void SingleInstance::activate(const QVariantMap &platformData)
{
    if (!m_window)
        return;
    // Wayland compositors raise a window only for a fresh activation token;
    // Qt takes it from the environment when the window asks to be activated.
    if (const QString token = platformData.value(QStringLiteral("activation-token")).toString();
        !token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    m_window->setWindowStates(m_window->windowStates() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

QList<QUrl> SingleInstance::urlsFrom(const QStringList &arguments, const QString &workingFolder)
{
    QList<QUrl> urls;
    for (const QString &argument : arguments) {
        // A path, relative ones from the working folder, or a URL; names are
        // kept as the bytes they were given in (model/LocalPath.h).
        QUrl url;
        if (argument.startsWith(u"file:", Qt::CaseInsensitive))
            url = localpath::fileUrl(localpath::absolute(argument));
        else if (argument.contains(u"://"))
            url = QUrl(argument);
        else
            url = localpath::fileUrl(localpath::absolute(argument.startsWith(u'/') ? argument : workingFolder + u'/' + argument));
        if (const std::optional<LocalEntry> entry = localEntry(url))
            urls.append(entry->url);
        else
            std::fprintf(stderr, "tarnwell: %s is not a folder or a song; skipped\n",
                         localpath::readable(argument).toUtf8().constData());
    }
    return urls;
}

OpenPlan SingleInstance::planOpen(const QList<QUrl> &urls)
{
    OpenPlan plan;
    QList<QUrl> songs;
    for (const QUrl &url : urls) {
        const std::optional<LocalEntry> entry = localEntry(url);
        if (!entry)
            qCWarning(lcApp) << "not a folder or a song, not opened:" << url;
        else if (!entry->isFolder)
            songs.append(entry->url);
        else if (!plan.folders.contains(entry->url))
            plan.folders.append(entry->url);
    }
    for (const QUrl &song : songs) {
        auto holder = std::find_if(plan.folders.cbegin(), plan.folders.cend(),
            [&song](const QUrl &folder) { return holds(folder, song); });
        const QUrl folder = holder != plan.folders.cend()
            ? *holder
            : song.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
        if (holder == plan.folders.cend())
            plan.folders.append(folder);
        if (!plan.song) {
            plan.song = song;
            plan.songFolder = folder;
        }
    }
    return plan;
}

void SingleInstance::Activate(const QVariantMap &platformData)
{
    activate(platformData);
}

void SingleInstance::Open(const QStringList &uris, const QVariantMap &platformData)
{
    QList<QUrl> urls;
    for (const QString &uri : uris)
        urls.append(QUrl(uri));
    open(urls);
    activate(platformData);
}

void SingleInstance::ActivateAction(const QString &name, const QVariantList &, const QVariantMap &)
{
    sendErrorReply(QDBusError::NotSupported, QStringLiteral("Tarnwell has no action \"%1\"").arg(name));
}
