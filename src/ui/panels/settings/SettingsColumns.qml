// The sections, side by side as the panel's width has room.
import QtQuick
import QtQuick.Window
import QtQuick.Templates as T
import Velmora

Item {
    id: area

    required property SettingsViewModel settings
    required property real panelWidth
    signal asked(string action)

    onPanelWidthChanged: {
        const held = area.Window.activeFocusItem;
        const name = held && within(held) ? held.objectName : "";
        settings.layOut(panelWidth);
        if (name === "" || (held && held.activeFocus))
            return;
        const again = named(columns, name);  // its row was made anew in another column
        if (again)
            again.forceActiveFocus();
    }
    function within(item) {
        while (item && item !== area)
            item = item.parent;
        return item === area;
    }
    function named(item, name) {
        for (let i = 0; i < item.children.length; ++i) {
            const child = item.children[i];
            const found = child.objectName === name ? child : named(child, name);
            if (found)
                return found;
        }
        return null;
    }
    Component.onCompleted: settings.layOut(panelWidth)

    Label {
        anchors.horizontalCenter: parent.horizontalCenter
        y: 24
        visible: !area.settings.anyShown
        color: Theme.textFaint
        text: qsTr("No setting matches")
    }
    Flickable {
        id: view
        objectName: "settingsView"

        function reveal(item) {
            const top = item.mapToItem(columns, 0, 0).y;
            contentY = Math.max(0, Math.min(top - 8, Math.max(contentY, top + item.height + 8 - height)));
        }

        anchors.fill: parent
        contentHeight: columns.implicitHeight + 16
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: T.ScrollBar {
            id: bar
            implicitWidth: 8
            padding: 2
            minimumSize: 0.1
            visible: size < 1
            contentItem: Rectangle {
                implicitWidth: 4
                radius: 2
                color: bar.pressed ? Theme.textFaint : Theme.lineStrong
            }
        }

        Row {
            id: columns
            readonly property real columnWidth: Math.floor((view.width - 32 - (repeater.count - 1) * spacing) / Math.max(1, repeater.count))
            x: 16
            spacing: 16
            Repeater {
                id: repeater
                model: area.settings.columns
                Column {
                    id: column
                    required property var modelData
                    required property int index
                    width: columns.columnWidth
                    spacing: 12
                    visible: area.settings.shown["column " + index] !== false
                    Repeater {
                        model: column.modelData
                        SettingsSection {
                            required property var modelData
                            width: column.width
                            settings: area.settings
                            section: modelData
                            onAsked: action => area.asked(action)
                            onEntered: item => view.reveal(item)
                        }
                    }
                }
            }
        }
    }
}
