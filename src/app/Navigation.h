// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <optional>

// Where the user is: the one screen of the main area with what is selected on
// it, and the popups over the window (the search and the theme popup).
//
//   sidebar, top bar, home, search ─► actions below ─► screen + selections
//     screen ─► AppState loads the artists grid or the untagged songs
//     selectedPlaylistID ─► the current queue
//     selectedArtistName / Album ─► the artists screen's detail
//
// Strings are empty when nothing is selected. Every action sets its screen and
// selections in one place (show()), so they cannot disagree.
class Navigation : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(Screen screen READ screen NOTIFY screenChanged)
    Q_PROPERTY(QString selectedPlaylistID READ selectedPlaylistID NOTIFY selectedPlaylistIDChanged)
    Q_PROPERTY(QString selectedArtistName READ selectedArtistName WRITE setSelectedArtistName NOTIFY
                   selectedArtistNameChanged)
    Q_PROPERTY(QString selectedArtistAlbum READ selectedArtistAlbum WRITE setSelectedArtistAlbum NOTIFY
                   selectedArtistAlbumChanged)
    Q_PROPERTY(bool showThemePicker READ showThemePicker WRITE setShowThemePicker NOTIFY showThemePickerChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(bool searchActive READ searchActive WRITE setSearchActive NOTIFY searchActiveChanged)

public:
    enum class Screen { Home, Untagged, Artists, Songs };
    Q_ENUM(Screen)

    using QObject::QObject;

    Screen screen() const { return m_screen; }
    std::optional<QUuid> selectedPlaylist() const { return m_selectedPlaylist; }
    QString selectedPlaylistID() const;
    QString selectedArtistName() const { return m_selectedArtistName; }
    QString selectedArtistAlbum() const { return m_selectedArtistAlbum; }
    bool showThemePicker() const { return m_showThemePicker; }
    QString searchText() const { return m_searchText; }
    bool searchActive() const { return m_searchActive; }

    void setSelectedArtistName(const QString &name);
    void setSelectedArtistAlbum(const QString &album);
    void setShowThemePicker(bool on);
    void setSearchText(const QString &text);
    // Activating the search closes the theme popup.
    void setSearchActive(bool on);

    // The home button also closes the theme popup; the word mark leaves it.
    Q_INVOKABLE void goHome();
    Q_INVOKABLE void goHomeFromWordMark();
    Q_INVOKABLE void showAllArtists();
    Q_INVOKABLE void showAllSongs();
    Q_INVOKABLE void showUntaggedSongs();
    Q_INVOKABLE void selectPlaylist(const QString &playlistId);
    // An artist, or an artist's album, from the home screen or the search:
    // the search closes first.
    Q_INVOKABLE void openArtist(const QString &artist);
    Q_INVOKABLE void openAlbum(const QString &artist, const QString &album);
    // From an artist back to the grid.
    Q_INVOKABLE void backToArtists();

    Q_INVOKABLE void dismissSearch();
    // A click anywhere in the content: closes the search, then the theme popup.
    Q_INVOKABLE void dismissPopups();
    Q_INVOKABLE void toggleThemePicker();

Q_SIGNALS:
    void screenChanged();
    void selectedPlaylistIDChanged();
    void selectedArtistNameChanged();
    void selectedArtistAlbumChanged();
    void showThemePickerChanged();
    void searchTextChanged();
    void searchActiveChanged();

private:
    // A selection an action leaves as it is.
    static constexpr std::nullopt_t unchanged = std::nullopt;

    void show(Screen screen, std::optional<QUuid> playlist, std::optional<QString> artist,
              std::optional<QString> album);
    void setSelectedPlaylist(const std::optional<QUuid> &playlist);

    Screen m_screen = Screen::Home;
    std::optional<QUuid> m_selectedPlaylist;
    QString m_selectedArtistName;
    QString m_selectedArtistAlbum;
    bool m_showThemePicker = false;
    QString m_searchText;
    bool m_searchActive = false;
};
