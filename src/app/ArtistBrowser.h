// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "browse/ArtistDetail.h"
#include "browse/ArtistListModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

class Navigation;

// The artists screen: the grid of every artist, and the albums and songs of
// the artist the navigation selects once the grid has that artist.
//
//   load(songs) ─► ArtistListModel ─ loaded ─┐
//   Navigation.selectedArtistName ──────────┴─► ArtistDetail.load(that artist's songs)
//   Navigation.selectedArtistAlbum ◄──────────► ArtistDetail.selectedAlbum
//   selectAlbum(album) ─► album selected ─► playRequested(its first song)
class ArtistBrowser : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(ArtistListModel *artists READ artists CONSTANT)
    Q_PROPERTY(ArtistDetail *detail READ detail CONSTANT)
    // The grid has loaded and has the selected artist.
    Q_PROPERTY(bool showingDetail READ showingDetail NOTIFY showingDetailChanged)

public:
    explicit ArtistBrowser(Navigation &navigation, QObject *parent = nullptr);
    ArtistBrowser(Navigation &navigation, MetadataReader reader, QObject *parent = nullptr);

    ArtistListModel *artists() { return &m_artists; }
    ArtistDetail *detail() { return &m_detail; }
    bool showingDetail() const;

    // Groups the songs anew.
    void load(const QList<Track> &songs);
    // Selects an album of the shown artist and asks for its first song to play.
    Q_INVOKABLE void selectAlbum(const QString &album);

Q_SIGNALS:
    void showingDetailChanged();
    void playRequested(const Track &track);

private:
    void followSelectedArtist();

    Navigation &m_navigation;
    ArtistListModel m_artists;
    ArtistDetail m_detail;
};
