// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtworkSources.h"

#include "artwork/ArtworkSource.h"

namespace {

QList<ArtworkSources *> &instances()
{
    static QList<ArtworkSources *> list;
    return list;
}

std::optional<QString> present(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional<QString>(text);
}

} // namespace

QUrl ArtworkSources::track(const QString &path, const QString &fallbackArtist, const QString &fallbackAlbum)
{
    if (path.isEmpty())
        return {};
    return artworksource::track(path, present(fallbackArtist), present(fallbackAlbum));
}

QUrl ArtworkSources::album(const QString &artist, const QString &album)
{
    return artworksource::album(present(artist), present(album));
}

QUrl ArtworkSources::artist(const QString &name)
{
    return name.isEmpty() ? QUrl() : artworksource::artist(name);
}

ArtworkSources::ArtworkSources(QObject *parent)
    : QObject(parent)
{
    instances().append(this);
}

ArtworkSources::~ArtworkSources()
{
    instances().removeOne(this);
}

void ArtworkSources::announceReplaced(const QUrl &source)
{
    for (ArtworkSources *sources : std::as_const(instances()))
        Q_EMIT sources->replaced(source);
}
