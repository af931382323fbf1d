// A passing notice: a title, and what there is to say about it.
import QtQuick

Rectangle {
    id: toast

    property string title
    property string detail

    width: Math.min(Math.max(heading.implicitWidth, more.implicitWidth) + 32, parent.width - 48)
    height: lines.implicitHeight + 20
    radius: 8
    color: Theme.raised
    border.width: 1
    border.color: Theme.lineStrong
    opacity: title !== "" ? 1 : 0
    visible: opacity > 0
    Behavior on opacity {
        NumberAnimation {
            duration: 120
        }
    }

    Column {
        id: lines
        anchors.centerIn: parent
        width: parent.width - 32
        spacing: 2
        Label {
            id: heading
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            font.weight: Font.DemiBold
            text: toast.title
        }
        Label {
            id: more
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            visible: text !== ""
            color: Theme.textSoft
            text: toast.detail
        }
    }
}
