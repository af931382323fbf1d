// What the application's menu shows over the window.
import QtQuick
import Velmora

Item {
    id: sheets

    required property ShellViewModel shell
    required property PaneViewModel pane
    property ActionsViewModel actions: null
    readonly property bool keysCaptured: keys.visible && keys.waiting !== ""

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
    KeySheet {
        id: keys
        objectName: "keysSheet"
        shell: sheets.shell
        pane: sheets.pane
        actions: sheets.actions
        visible: sheets.shell.sheet === ShellViewModel.Sheet.chartKey
        onClosed: sheets.leave(ShellViewModel.Sheet.chartKey)
    }
}
