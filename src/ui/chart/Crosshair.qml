// Lines through the pointer, with the price and the time there on the axes; or, fainter, through the place that the
// pointer of a linked pane is over, which may be in view in one direction alone.
import QtQuick
import Velmora

Item {
    id: view

    required property CrosshairState cross
    readonly property real priceAxis: cross.priceAxisWidth
    readonly property real timeAxis: cross.timeAxisHeight
    property bool ofPeer: false
    readonly property bool inColumn: cross.shown && cross.x >= 0 && cross.x < width - priceAxis
    readonly property bool inRow: cross.shown && cross.y >= 0 && cross.y < height - timeAxis
    readonly property bool showsTime: inColumn && (inRow || ofPeer || cross.belowChart)
    readonly property bool showsPrice: inRow && (inColumn || ofPeer)
    readonly property color lineColor: ofPeer ? "#22ffffff" : "#40ffffff"
    readonly property string name: ofPeer ? "peerCrosshair" : "crosshair"

    // From where to where a tag hides an axis, so that every label it touches is hidden whole. `labels` holds where each
    // begins and ends.
    function hidden(from, to, labels) {
        let begin = from, end = to;
        for (let i = 0; i < labels.length; i += 2) {
            if (labels[i] >= to || labels[i + 1] <= from)
                continue;
            begin = Math.min(begin, labels[i]);
            end = Math.max(end, labels[i + 1]);
        }
        return Qt.point(Math.floor(begin), Math.ceil(end));
    }
    // Where a tag of this height lies on the price axis: at the pointer, but beside the boxes that it must not cover, at
    // the nearest place with room for it.
    function besideBoxes(tagHeight) {
        const boxes = cross.priceBoxes, most = height - timeAxis - tagHeight;
        const y = Math.max(0, Math.min(Math.round(cross.y - tagHeight / 2), most));
        let above = y, below = y;
        for (let i = boxes.length - 2; i >= 0; i -= 2)
            if (boxes[i] < above + tagHeight && boxes[i + 1] > above)
                above = boxes[i] - tagHeight;
        for (let i = 0; i < boxes.length; i += 2)
            if (boxes[i] < below + tagHeight && boxes[i + 1] > below)
                below = boxes[i + 1];
        if (below > most)
            return above >= 0 ? above : y;
        return above >= 0 && cross.y - above - tagHeight / 2 < below + tagHeight / 2 - cross.y ? above : below;
    }
    // What of that a ground may hide: not over the boxes, which a label may reach into while it fades.
    function betweenBoxes(reach, tag) {
        const boxes = cross.priceBoxes;
        let begin = reach.x, end = reach.y;
        for (let i = 0; i < boxes.length; i += 2) {
            if (boxes[i + 1] <= tag.y)
                begin = Math.max(begin, boxes[i + 1]);
            else if (boxes[i] >= tag.y + tag.height)
                end = Math.min(end, boxes[i]);
        }
        return Qt.point(begin, end);
    }

    component Ground: Rectangle {
        color: Theme.background
    }
    component Tag: Rectangle {
        property alias text: label.text
        width: Math.ceil(label.implicitWidth) + 8
        height: Math.ceil(label.implicitHeight) + 3
        radius: 3
        color: view.ofPeer ? Theme.raised : Theme.pressed
        Label {
            id: label
            anchors.centerIn: parent
            color: view.ofPeer ? Theme.textSoft : "white"
            font.pixelSize: 13
        }
    }

    Rectangle {
        objectName: view.name + "Vertical"
        visible: view.showsTime
        x: Math.round(view.cross.x)
        width: 1
        height: view.height - view.timeAxis
        color: view.lineColor
    }
    Rectangle {
        objectName: view.name + "Horizontal"
        visible: view.showsPrice
        y: Math.round(view.cross.y)
        width: view.width - view.priceAxis
        height: 1
        color: view.lineColor
    }
    Ground {
        readonly property point span: view.betweenBoxes(view.hidden(priceTag.y, priceTag.y + priceTag.height, view.cross.priceLabels), priceTag)
        objectName: view.name + "PriceGround"
        visible: view.showsPrice
        x: view.width - view.priceAxis + 1
        y: span.x
        width: view.priceAxis - 1
        height: Math.min(span.y, view.height - view.timeAxis) - y
    }
    Tag {
        id: priceTag
        objectName: view.name + "Price"
        visible: view.showsPrice
        x: view.width - width - 1
        y: view.besideBoxes(height)
        text: view.cross.priceText
    }
    Ground {
        readonly property point span: view.hidden(timeTag.x, timeTag.x + timeTag.width, view.cross.timeLabels)
        objectName: view.name + "TimeGround"
        visible: timeTag.visible
        x: span.x
        y: view.height - view.timeAxis + 1
        width: Math.min(span.y, view.width - view.priceAxis) - x
        height: view.timeAxis - 1
    }
    Tag {
        id: timeTag
        objectName: view.name + "Time"
        visible: view.showsTime && view.cross.timeText !== ""
        x: Math.max(0, Math.min(Math.round(view.cross.x - width / 2), view.width - view.priceAxis - width))
        y: view.height - view.timeAxis + Math.round((view.timeAxis - height) / 2)
        text: view.cross.timeText
    }
}
