// SPDX-License-Identifier: GPL-3.0-or-later
// A symbol by name ("house", "play.fill"...), drawn from the icon font.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Text {
    id: icon

    property string name
    // The size of the symbol as the screens give it; the icon font draws its
    // glyphs with some room around them, so it is set a little larger.
    property real size: 16

    text: Symbols.glyph(name)
    color: Theme.primaryText
    font.family: Theme.symbolFont
    font.pixelSize: Math.round(size * 1.2)
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    Accessible.ignored: true
}
