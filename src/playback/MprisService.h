// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QObject>
#include <QUrl>
#include <QVariantMap>

#include <functional>

class AudioPlayer;
class PlaybackController;
class MprisPlayerAdaptor;

// Media keys and now-playing information for the desktop, as an MPRIS 2 player
// on the session bus (org.mpris.MediaPlayer2.tarnwell, or with an instance
// suffix when another copy holds that name).
//
// It observes the player and the controller and is not part of either. The
// owner calls updateNowPlaying when the playing song changes; the service
// follows the player's playing state and length by itself. Clients' commands
// are scheduled on the GUI thread and answered at once.
class MprisService : public QObject
{
    Q_OBJECT

public:
    static constexpr char serviceName[] = "org.mpris.MediaPlayer2.tarnwell";
    static constexpr char objectPath[] = "/org/mpris/MediaPlayer2";

    MprisService(AudioPlayer &player, PlaybackController &controller, QObject *parent = nullptr);
    ~MprisService() override;

    // Exports the player and claims the bus name; a second call does nothing.
    // False when there is no session bus or the name can't be had.
    bool registerOnBus();
    void unregisterFromBus();
    bool isRegistered() const { return m_registered; }
    // The name clients see, empty while unregistered.
    QString busName() const { return m_busName; }

    // Publishes the playing song and state: title (the file name without its
    // extension), length when known, the picture given last, and shuffle.
    void updateNowPlaying();
    // The picture of the playing song. It is written to a file on the thread
    // pool; clients see it from the next refresh on.
    void setArtwork(const QImage &image);
    // Whether clients may ask to bring the window forward (raiseRequested).
    void setCanRaise(bool canRaise) { m_canRaise = canRaise; }

    // For the D-Bus adaptors.
    QString playbackStatus() const;
    QVariantMap metadata() const { return m_metadata; }
    qint64 positionMicroseconds() const;
    bool canRaise() const { return m_canRaise; }
    void requestPlayPause();
    void requestPlay();
    void requestPause();
    void requestNext();
    void requestPrevious();
    void requestRaise();
    bool isShuffled() const;
    void requestShuffle(bool on);

Q_SIGNALS:
    void raiseRequested();
    // The picture file is written and announced.
    void artworkReady();

private:
    QVariantMap buildMetadata() const;
    void schedule(std::function<void()> action);
    void emitPropertiesChanged(const QVariantMap &changed);
    void removeArtFile();

    AudioPlayer &m_player;
    PlaybackController &m_controller;
    QObject *m_exported;
    MprisPlayerAdaptor *m_playerAdaptor;
    bool m_registered = false;
    bool m_canRaise = false;
    QString m_busName;
    QVariantMap m_metadata;
    QString m_status;
    bool m_shuffle = false;
    QString m_artFile;
    quint64 m_artSerial = 0;
};
