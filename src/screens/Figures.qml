// SPDX-License-Identifier: GPL-3.0-or-later
// Text whose digits all take the width of the widest one, so that times and
// counts don't jitter as they change. The interface font keeps its
// fixed-width figures behind a font feature this Qt version can't switch on,
// so each digit gets a cell; the words between them are laid out as usual.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Row {
    id: figures

    property string text
    property color color: Theme.primaryText
    property alias font: metrics.font

    readonly property real digitWidth: {
        let widest = 0
        for (const digit of "0123456789")
            widest = Math.max(widest, metrics.advanceWidth(digit))
        return Math.ceil(widest)
    }

    FontMetrics {
        id: metrics
        font.family: Theme.uiFont
    }

    Repeater {
        // Single digits, and the runs of other characters between them.
        model: figures.text.match(/[0-9]|[^0-9]+/g) || []
        Text {
            required property string modelData
            readonly property bool isDigit: modelData >= "0" && modelData <= "9" && modelData.length === 1
            // advanceWidth, unlike implicitWidth, counts trailing spaces.
            width: isDigit ? figures.digitWidth : metrics.advanceWidth(modelData)
            horizontalAlignment: Text.AlignHCenter
            text: modelData
            color: figures.color
            font: figures.font
        }
    }
}
