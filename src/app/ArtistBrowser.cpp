// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtistBrowser.h"

#include "Navigation.h"
#include "model/Log.h"

ArtistBrowser::ArtistBrowser(Navigation &navigation, QObject *parent)
    : ArtistBrowser(navigation, defaultMetadataReader(), parent)
{
}

ArtistBrowser::ArtistBrowser(Navigation &navigation, MetadataReader reader, QObject *parent)
    : QObject(parent)
    , m_navigation(navigation)
    , m_artists(reader)
    , m_detail(reader)
{
    connect(&m_artists, &ArtistListModel::loaded, this, &ArtistBrowser::followSelectedArtist);
    connect(&m_artists, &ArtistListModel::isLoadingChanged, this, &ArtistBrowser::showingDetailChanged);
    connect(&m_navigation, &Navigation::selectedArtistNameChanged, this, &ArtistBrowser::followSelectedArtist);
    connect(&m_navigation, &Navigation::selectedArtistAlbumChanged, this,
            [this] { m_detail.setSelectedAlbum(m_navigation.selectedArtistAlbum()); });
    connect(&m_detail, &ArtistDetail::selectedAlbumChanged, this, [this] {
        // A load starts from no album; the navigation's selection is put back when it ends.
        if (!m_detail.isLoading())
            m_navigation.setSelectedArtistAlbum(m_detail.selectedAlbum());
    });
    connect(&m_detail, &ArtistDetail::loaded, this,
            [this] { m_detail.setSelectedAlbum(m_navigation.selectedArtistAlbum()); });
}

bool ArtistBrowser::showingDetail() const
{
    return !m_artists.isLoading() && m_artists.indexOf(m_navigation.selectedArtistName()) >= 0;
}

void ArtistBrowser::load(const QList<Track> &songs)
{
    m_artists.load(songs);
}

void ArtistBrowser::followSelectedArtist()
{
    Q_EMIT showingDetailChanged();
    if (!showingDetail())
        return;
    const QString artist = m_navigation.selectedArtistName();
    qCDebug(lcApp).nospace() << "artist: " << artist << ", album: " << m_navigation.selectedArtistAlbum();
    m_detail.load(artist, m_artists.tracksOf(artist));
}

void ArtistBrowser::selectAlbum(const QString &album)
{
    if (const std::optional<Track> first = m_detail.selectAlbum(album))
        Q_EMIT playRequested(*first);
}
