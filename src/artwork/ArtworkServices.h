// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// Where the online lookups go. Each base address is the service's root; the
// request paths are appended to it. The defaults are the public services; the
// environment overrides each (tests point them at a loopback server):
//   TARNWELL_MUSICBRAINZ_URL  TARNWELL_COVERART_URL  TARNWELL_WIKIPEDIA_URL
//   TARNWELL_COMMONS_URL      TARNWELL_CONTACT_URL (the contact in the User-Agent)
struct ArtworkServices
{
    QString musicBrainz;
    QString coverArt;
    QString wikipedia;
    QString commons;
    QString contact;

    static ArtworkServices defaults();
    static ArtworkServices fromEnvironment();

    // "Tarnwell/1.0 (" + contact + ")"
    QByteArray userAgent() const;
};
