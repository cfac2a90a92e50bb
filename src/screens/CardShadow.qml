// SPDX-License-Identifier: GPL-3.0-or-later
// The soft shadow under a card (a panel, a dropdown): placed inside the card,
// it is drawn beneath it, 8 points down. Shader-drawn, so the software
// renderer leaves it out.
import QtQuick
import Qt5Compat.GraphicalEffects

RectangularGlow {
    // The card's corner radius.
    property real radius: 0

    z: -1
    anchors.fill: parent
    anchors.topMargin: 8
    anchors.bottomMargin: -8
    glowRadius: 20
    spread: 0
    cornerRadius: radius + glowRadius
    color: Qt.rgba(0, 0, 0, 0.24)
}
