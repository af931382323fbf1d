// The title of the 3D view and what can be switched in it.
import QtQuick
import QtQuick.Templates as T
import Velmora

Item {
    id: header

    required property Gex3DViewModel surface
    property bool narrow: false
    property bool rowsAsked: false
    // The view's last control: Tab goes round, and never to what is dimmed behind the card.
    property Item before
    readonly property Item first: rotate
    readonly property var buttons: [rotate, apart, expirations, shut]
    signal rowsToggled

    implicitHeight: 44

    component TextButton: T.Button {
        id: button
        property color onColor: Theme.accent
        implicitWidth: contentItem.implicitWidth + 20
        implicitHeight: 28
        hoverEnabled: true
        focusPolicy: Qt.TabFocus
        Accessible.name: text
        Accessible.checkable: true
        Accessible.checked: checked
        Keys.onReturnPressed: event => { if (!event.isAutoRepeat) clicked(); }
        Keys.onEnterPressed: event => { if (!event.isAutoRepeat) clicked(); }
        contentItem: Label {
            text: button.text
            font.pixelSize: Theme.small
            color: button.checked ? button.onColor : button.hovered ? Theme.text : Theme.textSoft
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }
        background: Rectangle {
            radius: 4
            color: button.down ? Theme.pressed : button.hovered ? Theme.hover : Theme.raised
            border.width: button.visualFocus ? 2 : 1
            border.color: button.visualFocus ? Theme.focus : Theme.line
        }
    }

    Row {
        id: title
        x: 16
        height: parent.height
        Label {
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            font.pixelSize: 15
            font.weight: Font.DemiBold
            text: "Vel"
        }
        Label {
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            font.pixelSize: 15
            font.weight: Font.DemiBold
            color: Theme.accent
            text: "mora"
        }
        Label {
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            font.pixelSize: 15
            text: " 3D"
        }
    }
    Label {
        anchors.left: title.right
        anchors.leftMargin: 12
        anchors.right: tools.left
        anchors.rightMargin: 8
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        font.pixelSize: Theme.small
        color: Theme.textSoft
        text: header.surface.source
    }
    Row {
        id: tools
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4

        TextButton {
            id: rotate
            objectName: "rotate"
            KeyNavigation.backtab: header.before  // from where Tab then leads here
            anchors.verticalCenter: parent.verticalCenter
            checked: header.surface.autoRotate
            onColor: Qt.rgba(0.086, 0.878, 0.478, 1)
            text: checked ? qsTr("Rotate ✓") : qsTr("Rotate")
            onClicked: header.surface.autoRotate = !header.surface.autoRotate
        }
        IconButton {
            id: apart
            objectName: "colorSafe"
            anchors.verticalCenter: parent.verticalCenter
            text: qsTr("Brighter positive, darker negative bars")
            icon24: "contrast"
            active: header.surface.colorSafe
            onClicked: header.surface.colorSafe = !header.surface.colorSafe
        }
        IconButton {
            id: expirations
            objectName: "expirations"
            anchors.verticalCenter: parent.verticalCenter
            visible: header.narrow
            text: qsTr("Expirations")
            icon24: "menu"
            active: header.rowsAsked
            onClicked: header.rowsToggled()
        }
        IconButton {
            id: shut
            objectName: "close"
            anchors.verticalCenter: parent.verticalCenter
            text: qsTr("Close")
            key: "Esc"
            icon24: "x"
            onClicked: header.surface.close()
        }
    }
    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.line
    }
}
