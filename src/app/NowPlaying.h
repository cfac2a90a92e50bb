// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyPressFilter.h"
#include "Library.h"
#include "model/Track.h"

#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <optional>

class ArtworkLoader;
class AudioPlayer;
class BackgroundFade;
class MprisService;
class PlaybackController;
class Preferences;
class SearchIndex;

// The song that plays, as the window shows it, and the controls of playback.
//
//   play / next / previous / shuffle / seek ─► PlaybackController ─► AudioPlayer
//   AudioPlayer.finishTick ─► next song
//   playing song changes ─► MPRIS metadata
//                        ─► ArtworkLoader.load ─► picture ─► BackgroundFade, MPRIS art
//                        ─► its artist (search index) ─► Preferences.recentArtists
class NowPlaying : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(bool hasTrack READ hasTrack NOTIFY trackChanged)
    Q_PROPERTY(QString trackId READ trackId NOTIFY trackChanged)
    // The file name without its extension.
    Q_PROPERTY(QString trackName READ trackName NOTIFY trackChanged)
    // The playing song's picture (image://artwork/playing/<n>); empty while none.
    Q_PROPERTY(QUrl pictureSource READ pictureSource NOTIFY pictureChanged)
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(bool isShuffled READ isShuffled NOTIFY isShuffledChanged)
    // currentTime and duration, in seconds.
    Q_PROPERTY(AudioPlayer *player READ player CONSTANT)
    // The picture behind the window, fading between songs.
    Q_PROPERTY(BackgroundFade *background READ background CONSTANT)

public:
    struct Services
    {
        AudioPlayer &player;
        PlaybackController &controller;
        MprisService &mpris;
        ArtworkLoader &artwork;
        BackgroundFade &background;
        Preferences &preferences;
        const SearchIndex &searchIndex;
    };

    NowPlaying(Services services, SongLookup lookup, QObject *parent = nullptr);
    ~NowPlaying() override;

    const std::optional<Track> &track() const { return m_track; }
    bool hasTrack() const { return m_track.has_value(); }
    QString trackId() const;
    QString trackName() const;
    QUrl pictureSource() const;
    bool isPlaying() const;
    bool isShuffled() const;
    AudioPlayer *player() { return &m_services.player; }
    BackgroundFade *background() { return &m_services.background; }

    // A song of the library or of a playlist (by id) starts from the top.
    Q_INVOKABLE void play(const QString &trackId);
    void play(const Track &track);
    Q_INVOKABLE void togglePlayPause();
    Q_INVOKABLE void next();
    Q_INVOKABLE void previous();
    Q_INVOKABLE void toggleShuffle();
    // Jumps to that share (0...1) of the song.
    Q_INVOKABLE void seek(double fraction);

    // Seconds forward (or back, when negative) in the playing song.
    Q_INVOKABLE void seekBy(double seconds);

    // The playback keys (PlaybackKeys.h); true when the key press was handled.
    bool handleKeyPress(const KeyPressFilter::KeyPress &press);

Q_SIGNALS:
    void trackChanged();
    void pictureChanged();
    void isPlayingChanged();
    void isShuffledChanged();

private:
    void onPlaybackChanged(unsigned changes);
    void setTrack(const std::optional<Track> &track);
    void onPictureChanged();

    Services m_services;
    SongLookup m_lookup;
    std::optional<Track> m_track;
};
