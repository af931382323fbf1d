// What a control says of itself while the pointer rests on it, or while it has the keyboard. A child of the control.
import QtQuick
import QtQuick.Window

Item {
    id: tip

    property string text
    property bool wanted: false
    readonly property Item control: parent

    onWantedChanged: {
        if (wanted)
            delay.restart();
        else
            delay.stop();
        box.active = false;
    }

    Timer {
        id: delay
        interval: 500
        onTriggered: box.active = tip.text !== ""
    }
    Loader {
        id: box
        active: false
        sourceComponent: Rectangle {
            id: card
            readonly property Item area: tip.Window.contentItem
            readonly property point at: tip.control.mapToItem(area, 0, 0)
            readonly property real below: at.y + tip.control.height + 6
            objectName: "tip"
            parent: area
            z: 1000
            x: Math.round(Math.max(4, Math.min(at.x + (tip.control.width - width) / 2, area.width - width - 4)))
            y: Math.round(below + height < area.height ? below : at.y - height - 6)
            width: Math.min(words.implicitWidth, 260) + 16
            height: words.implicitHeight + 8
            radius: 4
            color: Theme.raised
            border.width: 1
            border.color: Theme.lineStrong
            Label {
                id: words
                x: 8
                y: 4
                width: parent.width - 16
                wrapMode: Text.Wrap
                font.pixelSize: Theme.small
                text: tip.text
            }
        }
    }
}
