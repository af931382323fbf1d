// The button at the left of the toolbar, and the application's menu below it.
import QtQuick
import Velmora

IconButton {
    id: control

    required property ShellViewModel shell

    // Every row is there only if the program can do it.
    function commands() {
        const command = Qt.platform.os === "osx" ? "⌘" : qsTr("Ctrl+");
        const rows = [];
        if (shell.canOpenWindows)
            rows.push({ label: qsTr("New Window"), value: "newWindow", key: command + "N" }, { separator: true });
        rows.push({ label: qsTr("Keyboard shortcuts"), value: "showKeys" });
        if (shell.canCheckForUpdates)
            rows.push({ label: qsTr("Check for Updates…"), value: "checkForUpdates" });
        rows.push({ label: qsTr("About Velmora"), value: "showAbout" }, { separator: true });
        if (shell.canLeavePractice)
            rows.push({ label: qsTr("Leave practice"), value: "leavePractice" });
        rows.push({ label: qsTr("Quit"), value: "quit", key: command + "Q" });
        return rows;
    }

    text: qsTr("Menu")
    icon24: "menu"
    active: list.visible
    Accessible.role: Accessible.ButtonMenu
    Keys.onDownPressed: list.open()
    onClicked: list.visible ? list.close() : list.open()

    PopupList {
        id: list
        objectName: "appMenu"
        width: 224
        rows: control.commands()
        onChosen: value => control.shell[value]()
    }
}
