// The expirations of the 3D view, each with a switch for its row of bars.
import QtQuick
import Velmora

Rectangle {
    id: list

    required property Gex3DViewModel surface
    property bool covers: false  // the scene
    readonly property Item last: switches.count > 0 ? switches.itemAt(switches.count - 1) : null
    signal placesChanged

    // Those in view, for whoever tells their places.
    function boxes() {
        const out = [];
        if (!visible)
            return out;
        for (let i = 0; i < column.children.length; ++i) {
            const box = column.children[i];
            if (box.objectName !== "" && box.y >= flick.contentY && box.y + box.height <= flick.contentY + flick.height)
                out.push(box);
        }
        return out;
    }
    onVisibleChanged: placesChanged()

    color: covers ? Qt.rgba(0.051, 0.059, 0.071, 0.92) : "transparent"

    Rectangle {
        width: 1
        height: parent.height
        color: Theme.line
    }
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }
    Label {
        id: heading
        x: 16
        y: 12
        font.pixelSize: 11
        color: Theme.textFaint
        text: qsTr("EXPIRATIONS")
    }
    Flickable {
        id: flick
        anchors.top: heading.bottom
        anchors.topMargin: 4
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 8
        x: 16
        width: parent.width - 24
        clip: true
        contentHeight: column.height
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        onContentYChanged: list.placesChanged()

        Column {
            id: column
            width: parent.width
            onHeightChanged: list.placesChanged()

            Repeater {
                id: switches
                model: list.surface.expirations.length
                CheckField {
                    id: box
                    required property int index
                    readonly property var row: list.surface.expirations[index] || { date: "", label: "", hidden: false }
                    objectName: "row " + row.label
                    width: column.width
                    font.pixelSize: 12
                    text: row.label
                    checked: !row.hidden
                    onToggled: {
                        list.surface.setHidden(row.date, !checked);
                        checked = Qt.binding(() => !row.hidden);
                    }
                    onActiveFocusChanged: {
                        if (activeFocus)
                            flick.contentY = Math.max(Math.min(flick.contentY, y), y + height - flick.height);
                    }
                }
            }
        }
    }
}
