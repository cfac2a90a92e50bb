// SPDX-License-Identifier: GPL-3.0-or-later
#include "MprisService.h"

#include "AudioPlayer.h"
#include "MprisAdaptors.h"
#include "PlaybackController.h"
#include "model/LocalPath.h"
#include "model/Log.h"
#include "model/TextUtil.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QFile>
#include <QFuture>
#include <QStandardPaths>
#include <QtConcurrent>

#include <cmath>

namespace {

const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

qint64 microseconds(double seconds)
{
    return qint64(std::llround(seconds * 1e6));
}

} // namespace

MprisService::MprisService(AudioPlayer &player, PlaybackController &controller, QObject *parent)
    : QObject(parent)
    , m_player(player)
    , m_controller(controller)
    , m_exported(new QObject(this))
{
    new MprisRootAdaptor(this, m_exported);
    m_playerAdaptor = new MprisPlayerAdaptor(this, m_exported);
    connect(&m_player, &AudioPlayer::isPlayingChanged, this, &MprisService::updateNowPlaying);
    // The length of some streams is only learnt while they play.
    connect(&m_player, &AudioPlayer::durationChanged, this, &MprisService::updateNowPlaying);
    connect(&m_player, &AudioPlayer::seeked, this, [this](double seconds) {
        if (m_registered)
            Q_EMIT m_playerAdaptor->Seeked(microseconds(seconds));
    });
    m_status = playbackStatus();
}

MprisService::~MprisService()
{
    unregisterFromBus();
    removeArtFile();
}

bool MprisService::registerOnBus()
{
    if (m_registered)
        return true;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCInfo(lcPlayback) << "no session bus; media keys and now-playing information are off";
        return false;
    }
    const QString path = QString::fromLatin1(objectPath);
    if (!bus.registerObject(path, m_exported, QDBusConnection::ExportAdaptors)) {
        qCInfo(lcPlayback) << "cannot export the media player object:" << bus.lastError().message();
        return false;
    }
    QString name = QString::fromLatin1(serviceName);
    if (!bus.registerService(name)) {
        // Another copy is running; MPRIS names further instances this way.
        name += QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid());
        if (!bus.registerService(name)) {
            qCInfo(lcPlayback) << "cannot claim" << name << ":" << bus.lastError().message();
            bus.unregisterObject(path);
            return false;
        }
    }
    m_busName = name;
    m_registered = true;
    m_metadata = buildMetadata();
    m_status = playbackStatus();
    return true;
}

void MprisService::unregisterFromBus()
{
    if (!m_registered)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterService(m_busName);
    bus.unregisterObject(QString::fromLatin1(objectPath));
    m_registered = false;
    m_busName.clear();
}

QString MprisService::playbackStatus() const
{
    if (m_player.isPlaying())
        return QStringLiteral("Playing");
    return m_controller.playingTrack() ? QStringLiteral("Paused") : QStringLiteral("Stopped");
}

qint64 MprisService::positionMicroseconds() const
{
    return microseconds(m_player.livePosition());
}

QVariantMap MprisService::buildMetadata() const
{
    const std::optional<Track> &track = m_controller.playingTrack();
    if (!track)
        return {};
    QVariantMap map;
    const QString id = track->id.toString(QUuid::Id128);
    map.insert(QStringLiteral("mpris:trackid"),
        QVariant::fromValue(QDBusObjectPath(QStringLiteral("/org/tarnwell/track/") + id)));
    map.insert(QStringLiteral("xesam:title"), text::displayName(track->path()));
    if (m_player.duration() > 0)
        map.insert(QStringLiteral("mpris:length"), microseconds(m_player.duration()));
    if (!m_artFile.isEmpty())
        map.insert(QStringLiteral("mpris:artUrl"), localpath::fileUrl(m_artFile).toString());
    return map;
}

void MprisService::updateNowPlaying()
{
    const QVariantMap metadata = buildMetadata();
    const QString status = playbackStatus();
    QVariantMap changed;
    if (metadata != m_metadata) {
        m_metadata = metadata;
        changed.insert(QStringLiteral("Metadata"), metadata);
    }
    if (status != m_status) {
        m_status = status;
        changed.insert(QStringLiteral("PlaybackStatus"), status);
    }
    if (m_controller.isShuffled() != m_shuffle) {
        m_shuffle = m_controller.isShuffled();
        changed.insert(QStringLiteral("Shuffle"), m_shuffle);
    }
    emitPropertiesChanged(changed);
}

void MprisService::emitPropertiesChanged(const QVariantMap &changed)
{
    if (!m_registered || changed.isEmpty())
        return;
    // QtDBus does not announce adaptor property changes itself.
    QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(objectPath),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
    signal << playerInterface << changed << QStringList();
    QDBusConnection::sessionBus().send(signal);
}

void MprisService::setArtwork(const QImage &image)
{
    const quint64 serial = ++m_artSerial;
    if (image.isNull()) {
        removeArtFile();
        return;
    }
    // In the program's data folder, the one place besides the Music folder
    // that it writes to.
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (dir.isEmpty() || !QDir().mkpath(dir))
        return;
    // A new name for each picture: clients cache pictures by URL.
    const QString path = QDir(dir).filePath(
        QStringLiteral("tarnwell-now-playing-%1-%2.jpg").arg(QCoreApplication::applicationPid()).arg(serial));
    QtConcurrent::run([image, path] {
        return image.save(path, "JPEG", 90);
    }).then(this, [this, serial, path](bool saved) {
        if (serial != m_artSerial || !saved) {
            QFile::remove(path);
            return;
        }
        removeArtFile();
        m_artFile = path;
        // Clients learn of the picture now, not with the next change of song or state.
        updateNowPlaying();
        Q_EMIT artworkReady();
    });
}

void MprisService::removeArtFile()
{
    if (!m_artFile.isEmpty())
        QFile::remove(m_artFile);
    m_artFile.clear();
}

void MprisService::schedule(std::function<void()> action)
{
    QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
}

void MprisService::requestPlayPause()
{
    schedule([this] { m_controller.togglePlayPause(); });
}

void MprisService::requestPlay()
{
    schedule([this] { m_player.play(); });
}

void MprisService::requestPause()
{
    schedule([this] { m_player.pause(); });
}

bool MprisService::isShuffled() const
{
    return m_controller.isShuffled();
}

void MprisService::requestShuffle(bool on)
{
    schedule([this, on] {
        if (m_controller.isShuffled() != on)
            m_controller.toggleShuffle();
    });
}

void MprisService::requestNext()
{
    schedule([this] { m_controller.playNext(); });
}

void MprisService::requestPrevious()
{
    schedule([this] { m_controller.playPrevious(); });
}

void MprisService::requestRaise()
{
    if (m_canRaise)
        schedule([this] { Q_EMIT raiseRequested(); });
}
