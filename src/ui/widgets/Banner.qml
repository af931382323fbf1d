// A message that stays until it is over or dismissed, with at most one thing to do about it.
import QtQuick

Rectangle {
    id: banner

    property string title
    property string text
    property string icon: "info"
    property string action
    property bool dismissible: true

    signal acted
    signal dismissed

    implicitHeight: Math.max(lines.implicitHeight, 28) + 16
    radius: 8
    color: Theme.raised
    border.width: 1
    border.color: Theme.lineStrong
    Accessible.role: Accessible.AlertMessage
    Accessible.name: title + (title !== "" && text !== "" ? ". " : "") + text

    MouseArea {  // what lies below is not pressed through it
        anchors.fill: parent
    }
    Icon {
        id: sign
        x: 12
        anchors.verticalCenter: parent.verticalCenter
        name: banner.icon
        color: Theme.accent
    }
    Column {
        id: lines
        anchors.left: sign.right
        anchors.leftMargin: 12
        anchors.right: buttons.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2
        Label {
            width: parent.width
            visible: text !== ""
            wrapMode: Text.Wrap
            font.weight: Font.DemiBold
            text: banner.title
        }
        Label {
            width: parent.width
            visible: text !== ""
            wrapMode: Text.Wrap
            maximumLineCount: 4
            elide: Text.ElideRight
            color: banner.title === "" ? Theme.text : Theme.textSoft
            text: banner.text
        }
    }
    Row {
        id: buttons
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4
        PushButton {
            objectName: "bannerAction"
            visible: banner.action !== ""
            implicitHeight: 28
            text: banner.action
            onClicked: banner.acted()
        }
        IconButton {
            objectName: "bannerClose"
            visible: banner.dismissible
            text: qsTr("Dismiss")
            icon24: "x"
            onClicked: banner.dismissed()
        }
    }
}
