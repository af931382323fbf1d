// The search, and what concerns the settings as a whole.
import QtQuick
import Velmora

Item {
    id: head

    required property SettingsViewModel settings
    readonly property bool narrow: width < buttons.implicitWidth + 200
    signal keysRequested

    implicitHeight: narrow ? search.height + 8 + buttons.implicitHeight : search.height

    TextEntry {
        id: search
        objectName: "settingsSearch"
        width: head.narrow ? head.width : head.width - buttons.implicitWidth - 8
        height: 30
        field.height: 30
        field.font.pixelSize: Theme.normal
        reserved: 20
        name: qsTr("Search the settings")
        prompt: qsTr("Search")
        text: head.settings.search
        field.onTextEdited: head.settings.search = field.text
        Keys.onEscapePressed: event => {
            event.accepted = head.settings.search !== "";
            head.settings.search = "";
        }
        Connections {  // typing has ended the binding
            target: head.settings
            function onSearchChanged() {
                if (search.text !== head.settings.search)
                    search.text = head.settings.search;
            }
        }
        Icon {
            anchors.right: parent.right
            anchors.rightMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            name: "search"
            color: Theme.textFaint
        }
    }
    Row {
        id: buttons
        anchors.right: head.narrow ? undefined : parent.right
        y: head.narrow ? search.height + 8 : 0
        spacing: 8

        PushButton {
            objectName: "applyToAll"
            visible: head.settings.hasOtherPanes
            implicitHeight: 30
            leftPadding: 12
            rightPadding: 12
            text: qsTr("Apply to all panes")
            onClicked: head.settings.applyToAll()
        }
        PushButton {
            objectName: "settingsKeys"
            implicitHeight: 30
            implicitWidth: 64
            leftPadding: 12
            rightPadding: 12
            text: qsTr("Keys")
            Accessible.name: qsTr("Keyboard shortcuts")
            onClicked: head.keysRequested()
        }
    }
}
