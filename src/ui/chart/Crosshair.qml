// Lines through the pointer, with the price and the time there on the axes.
import QtQuick
import Velmora

Item {
    id: view

    required property CrosshairState cross
    readonly property real priceAxis: cross.priceAxisWidth
    readonly property real timeAxis: cross.timeAxisHeight
    readonly property bool inPlot: cross.shown && cross.x < width - priceAxis && cross.y < height - timeAxis

    component Tag: Rectangle {
        property alias text: label.text
        width: Math.ceil(label.implicitWidth) + 8
        height: Math.ceil(label.implicitHeight) + 3
        radius: 3
        color: Theme.pressed
        Label {
            id: label
            anchors.centerIn: parent
            color: "white"
            font.pixelSize: 13
        }
    }

    Rectangle {
        objectName: "crosshairVertical"
        visible: view.inPlot
        x: Math.round(view.cross.x)
        width: 1
        height: view.height - view.timeAxis
        color: "#40ffffff"
    }
    Rectangle {
        objectName: "crosshairHorizontal"
        visible: view.inPlot
        y: Math.round(view.cross.y)
        width: view.width - view.priceAxis
        height: 1
        color: "#40ffffff"
    }
    Tag {
        objectName: "crosshairPrice"
        visible: view.inPlot
        x: view.width - width - 1
        y: Math.max(0, Math.min(Math.round(view.cross.y - height / 2), view.height - view.timeAxis - height))
        text: view.cross.priceText
    }
    Tag {
        objectName: "crosshairTime"
        visible: view.inPlot && view.cross.timeText !== ""
        x: Math.max(0, Math.min(Math.round(view.cross.x - width / 2), view.width - view.priceAxis - width))
        y: view.height - view.timeAxis + Math.round((view.timeAxis - height) / 2)
        text: view.cross.timeText
    }
}
