// The lines through the pointer where it is over the oscillator, and the time's line where it is over the chart above;
// fainter, the time's line of the place that the pointer of a linked pane is over.
import QtQuick
import Velmora

Item {
    id: view

    required property CrosshairState cross
    property bool ofPeer: false
    readonly property bool showsTime: cross.shown && cross.x >= 0 && cross.x <= width
    readonly property bool showsValue: cross.belowChart && cross.shown
    readonly property color lineColor: ofPeer ? "#22ffffff" : Qt.rgba(1, 1, 1, 0.27)
    readonly property string name: ofPeer ? "oscPeerCrosshair" : "oscCrosshair"

    Rectangle {
        objectName: view.name + "Vertical"
        visible: view.showsTime
        x: Math.round(view.cross.x)
        width: 1
        height: view.height
        color: view.lineColor
    }
    Rectangle {
        objectName: view.name + "Horizontal"
        visible: view.showsValue
        y: Math.round(view.cross.oscillatorY)
        width: view.width
        height: 1
        color: view.lineColor
    }
    Rectangle {  // hides every label that the tag touches, whole
        readonly property point span: {
            const labels = view.cross.oscillatorLabels, from = tag.y, to = tag.y + tag.height;
            let begin = from, end = to;
            for (let i = 0; i < labels.length; i += 2) {
                if (labels[i] < to && labels[i + 1] > from) {
                    begin = Math.min(begin, labels[i]);
                    end = Math.max(end, labels[i + 1]);
                }
            }
            return Qt.point(Math.max(0, Math.floor(begin)), Math.min(Math.ceil(end), view.height));
        }
        objectName: view.name + "Ground"
        visible: tag.visible
        x: view.width - width
        y: span.x
        width: view.cross.priceAxisWidth
        height: span.y - span.x
        color: Theme.background
    }
    Rectangle {
        id: tag
        objectName: view.name + "Value"
        visible: view.showsValue
        x: view.width - width - 1
        y: Math.max(0, Math.min(Math.round(view.cross.oscillatorY - height / 2), view.height - height))
        width: Math.ceil(label.implicitWidth) + 8
        height: Math.ceil(label.implicitHeight) + 3
        radius: 3
        color: Qt.rgba(1, 1, 1, 0.13)
        Label {
            id: label
            anchors.centerIn: parent
            color: "white"
            font.pixelSize: 13
            text: view.cross.oscillatorText
        }
    }
}
