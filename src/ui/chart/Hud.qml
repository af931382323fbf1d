// The line of values at the chart's top left: a bar's prices, then the options. A chart that is narrow gets the options
// on a line of their own, and more lines where those are too long; none reaches the price axis.
import QtQuick
import Velmora

Item {
    id: view

    required property HudState hud
    property real room: 0  // for a line, in points
    property bool wraps: false
    signal laidOut(Item line)

    onVisibleChanged: if (visible) line.forceLayout()
    visible: hud.shown
    width: line.width
    height: visible ? line.height : 0
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("Values at the pointer")

    component Segment: Rectangle {
        id: segment
        required property HudValue modelData
        visible: modelData.value !== ""
        width: Math.ceil((content.width + 10) / 4) * 4  // in steps, so that the line stays where it is as digits change
        height: 18
        color: "#b80a0a0a"
        Row {
            id: content
            x: 5
            anchors.verticalCenter: parent.verticalCenter
            spacing: 4
            Label {
                visible: text !== ""
                color: Theme.hud888
                font.pixelSize: 11
                text: segment.modelData.label
            }
            Label {
                color: Theme.hudTones[segment.modelData.tone]
                font.pixelSize: 11
                text: segment.modelData.value
            }
        }
    }

    Flow {
        id: line
        width: view.room
        onPositioningComplete: view.laidOut(line)
        Repeater {
            model: view.hud.ofBar
            Segment {}
        }
        Item {  // the end of a line
            visible: view.wraps
            width: line.width
            height: 1
        }
        Repeater {
            model: view.hud.ofOptions
            Segment {}
        }
    }
}
