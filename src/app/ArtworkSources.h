// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// The image://artwork/... addresses for QML; an empty string means absent.
// replaced(address) tells the pictures showing an address to load it again.
class ArtworkSources : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit ArtworkSources(QObject *parent = nullptr);
    ~ArtworkSources() override;

    // To every engine's instance: a better picture is there for this address.
    static void announceReplaced(const QUrl &source);

    Q_INVOKABLE static QUrl track(const QString &path, const QString &fallbackArtist = {},
                                  const QString &fallbackAlbum = {});
    Q_INVOKABLE static QUrl album(const QString &artist, const QString &album);
    Q_INVOKABLE static QUrl artist(const QString &name);

Q_SIGNALS:
    void replaced(const QUrl &source);
};
