// SPDX-License-Identifier: GPL-3.0-or-later
#include "Navigation.h"

#include "model/Log.h"
#include "model/Track.h"

namespace {

// Sets a field and tells; false when it had that value.
template<typename T>
bool assign(Navigation *self, T &field, const T &value, void (Navigation::*changed)())
{
    if (field == value)
        return false;
    field = value;
    Q_EMIT(self->*changed)();
    return true;
}

} // namespace

QString Navigation::selectedPlaylistID() const
{
    return m_selectedPlaylist ? trackjson::uuidText(*m_selectedPlaylist) : QString();
}

void Navigation::setSelectedArtistName(const QString &name)
{
    // An album belongs to its artist: another artist's page starts on all songs.
    if (name != m_selectedArtistName)
        setSelectedArtistAlbum(QString());
    assign(this, m_selectedArtistName, name, &Navigation::selectedArtistNameChanged);
}

void Navigation::setSelectedArtistAlbum(const QString &album)
{
    assign(this, m_selectedArtistAlbum, album, &Navigation::selectedArtistAlbumChanged);
}

void Navigation::setShowThemePicker(bool on)
{
    assign(this, m_showThemePicker, on, &Navigation::showThemePickerChanged);
}

void Navigation::setSearchText(const QString &text)
{
    if (assign(this, m_searchText, text, &Navigation::searchTextChanged))
        qCDebug(lcApp) << "search:" << text;
}

void Navigation::setSearchActive(bool on)
{
    if (assign(this, m_searchActive, on, &Navigation::searchActiveChanged) && on)
        setShowThemePicker(false);
}

void Navigation::setSelectedPlaylist(const std::optional<QUuid> &playlist)
{
    assign(this, m_selectedPlaylist, playlist, &Navigation::selectedPlaylistIDChanged);
}

void Navigation::show(Screen screen, std::optional<QUuid> playlist, std::optional<QString> artist,
                      std::optional<QString> album)
{
    // The playlist first, so that a song list opens on its songs; the screen
    // before the artist, so that the artists grid starts loading before the
    // artist is looked up in it.
    setSelectedPlaylist(playlist);
    if (assign(this, m_screen, screen, &Navigation::screenChanged))
        qCDebug(lcApp) << "screen:" << screen;
    if (artist)
        setSelectedArtistName(*artist);
    if (album)
        setSelectedArtistAlbum(*album);
}

void Navigation::goHome()
{
    goHomeFromWordMark();
    setShowThemePicker(false);
}

void Navigation::goHomeFromWordMark()
{
    show(Screen::Home, std::nullopt, QString(), QString());
}

void Navigation::showAllArtists()
{
    show(Screen::Artists, std::nullopt, QString(), unchanged);
}

void Navigation::showAllSongs()
{
    show(Screen::Songs, std::nullopt, unchanged, unchanged);
}

void Navigation::showUntaggedSongs()
{
    show(Screen::Untagged, std::nullopt, unchanged, unchanged);
}

void Navigation::selectPlaylist(const QString &playlistId)
{
    const std::optional<QUuid> id = trackjson::parseUuid(playlistId);
    if (!id && !playlistId.isEmpty())
        qCWarning(lcApp) << "not a playlist identifier:" << playlistId;
    show(Screen::Songs, id, unchanged, unchanged);
}

void Navigation::openArtist(const QString &artist)
{
    openAlbum(artist, QString());
}

void Navigation::openAlbum(const QString &artist, const QString &album)
{
    dismissSearch();
    show(Screen::Artists, std::nullopt, artist, album);
}

void Navigation::backToArtists()
{
    setSelectedArtistName(QString());
    setSelectedArtistAlbum(QString());
}

void Navigation::dismissSearch()
{
    setSearchText(QString());
    setSearchActive(false);
}

void Navigation::dismissPopups()
{
    if (m_searchActive)
        dismissSearch();
    setShowThemePicker(false);
}

void Navigation::toggleThemePicker()
{
    setShowThemePicker(!m_showThemePicker);
}
