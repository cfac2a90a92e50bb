// SPDX-License-Identifier: GPL-3.0-or-later
// The answer of "Check for Updates...": checking, up to date, a newer version
// with its download, or why the check failed.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

ShellDialog {
    id: dialog

    required property int status
    required property string message
    required property url downloadUrl
    // Whether checking again could give another answer.
    property bool canRetry: true

    readonly property bool checking: status === UpdateChecker.Checking
    readonly property bool updateAvailable: status === UpdateChecker.UpdateAvailable

    signal downloadClicked()
    signal checkAgainClicked()

    Text {
        text: dialog.updateAvailable ? "A new version is available"
            : dialog.status === UpdateChecker.Failed ? "Update check failed"
            : dialog.checking ? "Checking for updates" : "No update needed"
        color: Theme.primaryText
        font.family: Theme.uiFont
        font.pixelSize: 17
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
    Item { width: 1; height: 10 }
    Row {
        width: parent.width
        spacing: 10
        BusyIndicator {
            visible: dialog.checking
            running: visible
            width: 22
            height: 22
        }
        Text {
            objectName: "updateMessage"
            width: parent.width - (dialog.checking ? 32 : 0)
            wrapMode: Text.WordWrap
            text: dialog.message
            color: Theme.secondaryText
            lineHeight: 1.25
            font.family: Theme.uiFont
            font.pixelSize: 13
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
    Item { width: 1; height: 22 }
    Row {
        anchors.right: parent.right
        spacing: 10
        PillButton {
            text: "Try Again"
            quiet: true
            visible: dialog.status === UpdateChecker.Failed && dialog.canRetry
            onClicked: dialog.checkAgainClicked()
        }
        PillButton {
            text: "Close"
            quiet: dialog.updateAvailable
            onClicked: dialog.close()
        }
        PillButton {
            text: "Download"
            symbol: "arrow.down.circle"
            visible: dialog.updateAvailable
            onClicked: dialog.downloadClicked()
        }
    }
}
