// The button at the left of the toolbar, and the application's menu below it.
import QtQuick
import Velmora

IconButton {
    id: control

    required property ShellViewModel shell

    property ActionsViewModel actions: null

    // Every row is there only if the program can do it. An action's row is what its table says.
    function commands() {
        const rows = [];
        const add = (id, value) => rows.push({ label: actions ? actions.titles[id] : id, value: value, key: actions ? actions.keys[id] : "" });
        if (shell.canOpenWindows) {
            add("newWindow", "newWindow");
            rows.push({ separator: true });
        }
        add("chartKey", "showChartKey");
        add("keys", "showKeys");
        if (shell.canCheckForUpdates)
            rows.push({ label: qsTr("Check for Updates…"), value: "checkForUpdates" });
        add("about", "showAbout");
        rows.push({ separator: true });
        if (shell.canLeavePractice)
            rows.push({ label: qsTr("Leave practice"), value: "leavePractice" });
        add("quit", "quit");
        return rows;
    }

    text: qsTr("Menu")
    icon24: "menu"
    active: list.visible
    tipHeld: list.visible
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
