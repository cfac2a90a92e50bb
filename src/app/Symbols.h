// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

// The one table from the symbol names the screens use ("house", "play.fill",
// "music.note.list"...) to glyphs of the Material Design Icons font. Screens
// draw symbols with SymbolIcon { name: "house" }, which asks this table.
class Symbols : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit Symbols(QObject *parent = nullptr);

    // The glyph for a symbol name; an empty string for an unknown name (and a
    // warning, so a typo shows up in the log rather than as a blank square).
    Q_INVOKABLE static QString glyph(const QString &name);
    // Every name the table knows, for tests.
    static QStringList names();
};
