// What the application's menu shows over the window.
import QtQuick
import Velmora

Item {
    id: sheets

    required property ShellViewModel shell
    readonly property string command: Qt.platform.os === "osx" ? "⌘" : qsTr("Ctrl+")

    // another one may have come in its place
    function leave(sheet) {
        if (shell.sheet === sheet)
            shell.closeSheet();
    }

    Sheet {
        objectName: "aboutSheet"
        title: "Velmora"
        visible: sheets.shell.sheet === ShellViewModel.Sheet.about
        onClosed: sheets.leave(ShellViewModel.Sheet.about)
        Label {
            objectName: "aboutText"
            width: parent.width
            wrapMode: Text.Wrap
            color: Theme.textSoft
            lineHeight: 1.3
            text: qsTr("Version %1 (build %2)").arg(sheets.shell.version).arg(sheets.shell.build) + "\n"
                  + qsTr("Built on %1").arg(sheets.shell.buildDate)
        }
    }
    Sheet {
        objectName: "messageSheet"
        title: sheets.shell.messageTitle
        visible: sheets.shell.sheet === ShellViewModel.Sheet.message
        onClosed: sheets.leave(ShellViewModel.Sheet.message)
        Label {
            width: parent.width
            wrapMode: Text.Wrap
            color: Theme.textSoft
            text: sheets.shell.messageText
        }
    }
    Sheet {
        objectName: "keysSheet"
        title: qsTr("Keyboard shortcuts")
        visible: sheets.shell.sheet === ShellViewModel.Sheet.keys
        width: 440
        onClosed: sheets.leave(ShellViewModel.Sheet.keys)
        Repeater {
            model: [
                [qsTr("Arrow keys"), qsTr("Move the chart")],
                ["+  −", qsTr("Zoom in and out")],
                [qsTr("Home"), qsTr("Back to the live edge")],
                [qsTr("Esc"), qsTr("Close the panel in front")],
                [qsTr("Alt+Arrow keys"), qsTr("Move a panel")],
                [qsTr("Alt+Shift+Arrow keys"), qsTr("Resize a panel")],
                [qsTr("Tab"), qsTr("To the next control")]
            ].concat(sheets.shell.canOpenWindows ? [[sheets.command + "N", qsTr("New window")]] : [],
                     [[sheets.command + "Q", qsTr("Quit")]])
            Row {
                required property var modelData
                width: parent.width
                Label {
                    width: 180
                    font.weight: Font.DemiBold
                    text: parent.modelData[0]
                }
                Label {
                    width: parent.width - 180
                    wrapMode: Text.Wrap
                    color: Theme.textSoft
                    text: parent.modelData[1]
                }
            }
        }
    }
}
