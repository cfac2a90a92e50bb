// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtQuick.Window

Window {
    id: window
    width: 1060
    height: 700
    minimumWidth: 820
    minimumHeight: 540
    visible: true
    title: "Tarnwell"
    color: "#0E0E10"
}
