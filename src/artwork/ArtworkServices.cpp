// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtworkServices.h"

namespace {

QString fromEnv(const char *name, const QString &fallback)
{
    const QString value = qEnvironmentVariable(name);
    return value.isEmpty() ? fallback : value;
}

// Paths are appended with their leading slash, so a base given with a trailing
// one must not make "//".
QString withoutTrailingSlash(QString base)
{
    while (base.endsWith(u'/'))
        base.chop(1);
    return base;
}

} // namespace

ArtworkServices ArtworkServices::defaults()
{
    return {
        QStringLiteral("https://musicbrainz.org"),
        QStringLiteral("https://coverartarchive.org"),
        QStringLiteral("https://en.wikipedia.org"),
        QStringLiteral("https://commons.wikimedia.org"),
        QStringLiteral("https://github.com/tarnwell/tarnwell"),
    };
}

ArtworkServices ArtworkServices::fromEnvironment()
{
    const ArtworkServices d = defaults();
    return {
        withoutTrailingSlash(fromEnv("TARNWELL_MUSICBRAINZ_URL", d.musicBrainz)),
        withoutTrailingSlash(fromEnv("TARNWELL_COVERART_URL", d.coverArt)),
        withoutTrailingSlash(fromEnv("TARNWELL_WIKIPEDIA_URL", d.wikipedia)),
        withoutTrailingSlash(fromEnv("TARNWELL_COMMONS_URL", d.commons)),
        fromEnv("TARNWELL_CONTACT_URL", d.contact),
    };
}

QByteArray ArtworkServices::userAgent() const
{
    return "Tarnwell/1.0 (" + contact.toUtf8() + ")";
}
