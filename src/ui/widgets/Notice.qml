// A boxed message with a warning sign.
import QtQuick

Rectangle {
    id: notice

    property string text

    implicitHeight: message.implicitHeight + 20
    radius: Theme.radius
    color: "#1d1a10"
    border.width: 1
    border.color: "#4a3f16"

    Icon {
        id: sign
        x: 12
        y: 12
        name: "triangle-alert"
        color: Theme.warning
    }
    Label {
        id: message
        anchors.left: sign.right
        anchors.leftMargin: 10
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        text: notice.text
        color: "#efe6c8"
        wrapMode: Text.Wrap
        lineHeight: 1.1
    }
}
