// SPDX-License-Identifier: GPL-3.0-or-later
// What the search found: up to three artists, three albums and four songs.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: dropdown

    // {artists: [...], albums: [...], tracks: [...]} as the search index gives it.
    property var results: ({ artists: [], albums: [], tracks: [] })
    readonly property bool hasResults: results.artists.length + results.albums.length + results.tracks.length > 0
    // What was typed: a query that finds nothing says so.
    property string query: ""
    readonly property bool showsNoResults: !hasResults && query.trim() !== ""

    // The result chosen with ↓ and ↑ from the search field, counted through
    // artists, albums and songs; -1 for none.
    property int current: -1
    readonly property int count: results.artists.length + results.albums.length + results.tracks.length
    onResultsChanged: current = -1

    function move(step) {
        if (count > 0)
            current = Math.max(0, Math.min(count - 1, current + step))
    }
    // Enter: the chosen result, or the first when none is.
    function activate() {
        const at = Math.max(0, current)
        const artists = results.artists, albums = results.albums, tracks = results.tracks
        if (at < artists.length)
            artistRequested(artists[at].name)
        else if (at < artists.length + albums.length)
            albumRequested(albums[at - artists.length].artist, albums[at - artists.length].displayName)
        else if (at < count)
            playRequested(tracks[at - artists.length - albums.length].trackId)
    }

    signal playRequested(string trackId)
    signal albumRequested(string artist, string album)
    signal artistRequested(string name)

    width: 320
    implicitHeight: column.implicitHeight + 16
    radius: 12
    color: Theme.raisedBackground
    border.color: Theme.border
    border.width: 1

    CardShadow {
        radius: dropdown.radius
        color: Qt.rgba(Theme.raisedBackground.r, Theme.raisedBackground.g, Theme.raisedBackground.b, 0.24)
    }

    Column {
        id: column
        y: 8
        width: parent.width

        Text {
            objectName: "noResults"
            visible: dropdown.showsNoResults
            width: parent.width
            leftPadding: 14
            rightPadding: 14
            topPadding: 10
            bottomPadding: 10
            text: "No results"
            elide: Text.ElideRight
            color: Theme.secondaryText
            font.family: Theme.uiFont
            font.pixelSize: 13
        }
        SearchSection {
            objectName: "artistsSection"
            width: parent.width
            title: "Artists"
            first: true
            visible: dropdown.results.artists.length > 0
            Repeater {
                model: dropdown.results.artists
                delegate: SearchRow {
                    required property var modelData
                    required property int index
                    width: column.width
                    current: dropdown.current === index
                    title: modelData.name
                    subtitle: SongFormat.songCount(modelData.trackCount)
                    picture: ArtworkSources.artist(modelData.name)
                    placeholder: "person"
                    round: true
                    trailing: "chevron.right"
                    onClicked: dropdown.artistRequested(modelData.name)
                }
            }
        }
        SearchSection {
            objectName: "albumsSection"
            width: parent.width
            title: "Albums"
            first: dropdown.results.artists.length === 0
            visible: dropdown.results.albums.length > 0
            Repeater {
                model: dropdown.results.albums
                delegate: SearchRow {
                    required property var modelData
                    required property int index
                    width: column.width
                    current: dropdown.current === dropdown.results.artists.length + index
                    title: modelData.displayName
                    subtitle: (modelData.artist !== "" ? modelData.artist + " · " : "") + SongFormat.songCount(modelData.trackCount)
                    picture: ArtworkSources.album(modelData.artist, modelData.displayName)
                    placeholder: "music.note.list"
                    trailing: "chevron.right"
                    onClicked: dropdown.albumRequested(modelData.artist, modelData.displayName)
                }
            }
        }
        SearchSection {
            objectName: "songsSection"
            width: parent.width
            title: "Songs"
            first: dropdown.results.artists.length === 0 && dropdown.results.albums.length === 0
            visible: dropdown.results.tracks.length > 0
            Repeater {
                model: dropdown.results.tracks
                delegate: SearchRow {
                    required property var modelData
                    required property int index
                    width: column.width
                    current: dropdown.current === dropdown.results.artists.length + dropdown.results.albums.length + index
                    title: modelData.name
                    subtitle: modelData.artist
                    picture: ArtworkSources.track(modelData.path)
                    placeholder: "music.note"
                    trailing: "play.circle"
                    trailingSize: 15
                    onClicked: dropdown.playRequested(modelData.trackId)
                }
            }
        }
    }
}
