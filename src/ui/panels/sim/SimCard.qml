// A part of the simulator's panel: a heading, what stands beside it, and what it is about.
import QtQuick
import Velmora

Rectangle {
    id: card

    property string title
    property string empty  // said in place of the content, where it is not empty
    property alias beside: side.data
    default property alias content: column.data

    implicitHeight: body.y + body.height + 12
    radius: 8
    color: "#0e0f11"
    border.width: 1
    border.color: Theme.line
    Accessible.role: Accessible.Grouping
    Accessible.name: title

    Label {
        x: 12
        height: 36
        width: parent.width - side.width - 30
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        font.pixelSize: 11
        font.weight: Font.DemiBold
        color: Theme.textSoft
        text: card.title
    }
    Row {
        id: side
        anchors.right: parent.right
        anchors.rightMargin: 8
        height: 36
        spacing: 4
    }
    Item {
        id: body
        x: 12
        y: 36
        width: parent.width - 24
        height: card.empty !== "" ? 18 : column.height

        Label {
            visible: card.empty !== ""
            color: Theme.textFaint
            font.pixelSize: Theme.small
            text: card.empty
        }
        Column {
            id: column
            visible: card.empty === ""
            width: parent.width
        }
    }
}
