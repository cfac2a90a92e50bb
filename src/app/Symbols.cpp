// SPDX-License-Identifier: GPL-3.0-or-later
#include "Symbols.h"

#include "model/Log.h"

#include <QHash>

namespace {

// Code points of the Material Design Icons font packaged by Debian (1.6.x).
struct Entry
{
    const char *name;
    char32_t codePoint;
};

constexpr Entry table[] = {
    {"house", 0xF2DC},                  // home
    {"plus", 0xF415},                   // plus
    {"checkmark", 0xF12C},              // check
    {"checkmark.circle", 0xF5E1},       // check-circle-outline
    {"checkmark.square.fill", 0xF132},  // checkbox-marked
    {"square", 0xF131},                 // checkbox-blank-outline
    {"magnifyingglass", 0xF349},        // magnify
    {"xmark", 0xF156},                  // close
    {"xmark.circle.fill", 0xF159},      // close-circle
    {"person", 0xF004},                 // account
    {"person.2", 0xF00E},               // account-multiple
    {"music.note", 0xF387},             // music-note
    {"music.note.list", 0xF411},        // playlist-play
    {"music.note.house", 0xF333},       // library-music
    {"tag.slash", 0xF4FC},              // tag-outline
    {"plus.circle.fill", 0xF417},       // plus-circle
    {"arrow.down.circle.fill", 0xF047}, // arrow-down-bold-circle
    {"chevron.left", 0xF141},           // chevron-left
    {"chevron.right", 0xF142},          // chevron-right
    {"play.fill", 0xF40A},              // play
    {"pause.fill", 0xF3E4},             // pause
    {"play.circle", 0xF40D},            // play-circle-outline
    {"backward.fill", 0xF4AE},          // skip-previous
    {"forward.fill", 0xF4AD},           // skip-next
    {"shuffle", 0xF49D},                // shuffle
    {"pencil", 0xF3EB},                 // pencil
    {"folder.badge.plus", 0xF257},      // folder-plus
    {"ellipsis", 0xF1D9},               // dots-vertical
    {"arrow.down.circle", 0xF1DA},      // download
};

const QHash<QString, QString> &glyphs()
{
    static const QHash<QString, QString> map = [] {
        QHash<QString, QString> m;
        for (const Entry &e : table)
            m.insert(QLatin1String(e.name), QString::fromUcs4(&e.codePoint, 1));
        return m;
    }();
    return map;
}

} // namespace

Symbols::Symbols(QObject *parent)
    : QObject(parent)
{
}

QString Symbols::glyph(const QString &name)
{
    const auto it = glyphs().constFind(name);
    if (it != glyphs().cend())
        return *it;
    if (!name.isEmpty())
        qCWarning(lcApp) << "no symbol named" << name;
    return {};
}

QStringList Symbols::names()
{
    QStringList out;
    for (const Entry &e : table)
        out.append(QLatin1String(e.name));
    return out;
}
