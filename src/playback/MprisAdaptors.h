// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QStringList>
#include <QVariantMap>

class MprisService;

// org.mpris.MediaPlayer2: who we are.
class MprisRootAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ canQuit)
    Q_PROPERTY(bool CanRaise READ canRaise)
    Q_PROPERTY(bool HasTrackList READ hasTrackList)
    Q_PROPERTY(QString Identity READ identity)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry)
    Q_PROPERTY(QStringList SupportedUriSchemes READ supportedUriSchemes)
    Q_PROPERTY(QStringList SupportedMimeTypes READ supportedMimeTypes)

public:
    MprisRootAdaptor(MprisService *service, QObject *exported);

    bool canQuit() const { return false; }
    bool canRaise() const;
    bool hasTrackList() const { return false; }
    QString identity() const { return QStringLiteral("Tarnwell"); }
    QString desktopEntry() const { return QStringLiteral("org.tarnwell.tarnwell"); }
    QStringList supportedUriSchemes() const { return {}; }
    QStringList supportedMimeTypes() const { return {}; }

public Q_SLOTS:
    void Raise();
    void Quit() { }

private:
    MprisService *m_service;
};

// org.mpris.MediaPlayer2.Player: the five commands, the state and the song.
// Seeking, stopping and opening URIs are not offered (CanSeek is false).
class MprisPlayerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE setRate)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(double MinimumRate READ rate)
    Q_PROPERTY(double MaximumRate READ rate)
    Q_PROPERTY(bool Shuffle READ shuffle WRITE setShuffle)
    Q_PROPERTY(bool CanGoNext READ yes)
    Q_PROPERTY(bool CanGoPrevious READ yes)
    Q_PROPERTY(bool CanPlay READ yes)
    Q_PROPERTY(bool CanPause READ yes)
    Q_PROPERTY(bool CanSeek READ no)
    Q_PROPERTY(bool CanControl READ yes)

public:
    MprisPlayerAdaptor(MprisService *service, QObject *exported);

    QString playbackStatus() const;
    double rate() const { return 1.0; }
    void setRate(double) { }
    QVariantMap metadata() const;
    double volume() const { return 1.0; }
    void setVolume(double) { }
    qlonglong position() const;
    bool shuffle() const;
    void setShuffle(bool on);
    bool yes() const { return true; }
    bool no() const { return false; }

public Q_SLOTS:
    void PlayPause();
    void Play();
    void Pause();
    void Next();
    void Previous();
    void Stop() { }
    void Seek(qlonglong) { }
    void SetPosition(const QDBusObjectPath &, qlonglong) { }
    void OpenUri(const QString &) { }

Q_SIGNALS:
    void Seeked(qlonglong position);

private:
    MprisService *m_service;
};
