// SPDX-License-Identifier: GPL-3.0-or-later
// The soft shadow under a card (a panel, a dropdown, a dialog): placed inside
// the card, it is drawn beneath it, `offset` points down. A nine-patch drawn
// once per size (image://shadow), so every renderer shows it.
import QtQuick

BorderImage {
    // The card's corner radius.
    property real radius: 0
    property int blur: 20
    property real offset: 8
    property color color: Qt.rgba(0, 0, 0, 0.24)

    readonly property int tile: Math.round(radius) + 2 * blur

    z: -1
    anchors.fill: parent
    anchors.leftMargin: -blur
    anchors.rightMargin: -blur
    anchors.topMargin: offset - blur
    anchors.bottomMargin: -offset - blur
    source: "image://shadow/" + Math.round(radius) + "/" + blur + "/" + encodeURIComponent(String(color))
    border.left: tile
    border.right: tile
    border.top: tile
    border.bottom: tile
}
