// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// The image://artwork/... addresses for QML; an empty string means absent.
class ArtworkSources : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static QUrl track(const QString &path, const QString &fallbackArtist = {},
                                  const QString &fallbackAlbum = {});
    Q_INVOKABLE static QUrl album(const QString &artist, const QString &album);
    Q_INVOKABLE static QUrl artist(const QString &name);
};
