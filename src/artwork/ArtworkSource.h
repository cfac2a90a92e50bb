// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The addresses QML uses for pictures, served by ArtworkImageProvider:
//
//   image://artwork/track/<path>                   trackArtwork of the file
//   image://artwork/track/<path>/<artist>/<album>  the same, else albumArt(artist, album)
//   image://artwork/album/<artist>/<album>         albumArt
//   image://artwork/artist/<name>                  artistImage
//   image://artwork/playing/<n>                    the playing song's picture (ArtworkLoader::imageSource)
//   image://artwork/playing/<n>/<top>/<bottom>     the same as the window's backdrop (drawn::backdrop)
//                                                  over the gradient of two colours ("#rrggbb")
//
// Each part is percent-encoded whole (a path's slashes too): encodeURIComponent
// in QML, or the functions below. An empty artist or album part means absent.

#include <QColor>
#include <QString>
#include <QUrl>

#include <optional>

namespace artworksource {

inline constexpr char providerName[] = "artwork";

QUrl track(const QString &path, const std::optional<QString> &fallbackArtist = std::nullopt,
           const std::optional<QString> &fallbackAlbum = std::nullopt);
QUrl album(const std::optional<QString> &artist, const std::optional<QString> &album);
QUrl artist(const QString &name);

struct Request
{
    enum Kind { Track, Album, Artist, Playing };
    Kind kind = Track;
    QString path;                 // Track
    std::optional<QString> artist; // Album; Track's fallback artist; Artist's name
    std::optional<QString> album;  // Album; Track's fallback album
    struct Backdrop
    {
        QColor top;
        QColor bottom;
    };
    std::optional<Backdrop> backdrop; // Playing, drawn as the window's backdrop
};

// How strongly the backdrop's picture is multiplied into its gradient.
inline constexpr double backdropStrength = 0.22;

// The request an image id (the address after "image://artwork/") stands for;
// absent for an id of no known form.
std::optional<Request> parse(const QString &id);

} // namespace artworksource
