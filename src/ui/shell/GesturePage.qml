// What a hand can do on the chart.
import QtQuick
import Velmora

FocusScope {
    id: page

    property ActionsViewModel actions: null

    function start() {
        rows.forceActiveFocus();
    }

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Gestures")

    ScrollRows {
        id: rows
        objectName: "gestureRows"
        anchors.fill: parent
        name: page.Accessible.name
        model: page.actions ? page.actions.gestureRows() : []
        delegate: Item {
            id: row
            required property var modelData
            readonly property bool heading: modelData.heading === true
            width: rows.width - 8
            height: Math.max(32, effect.implicitHeight + 12)
            Accessible.role: Accessible.ListItem
            Accessible.name: heading ? modelData.label : modelData.label + ": " + modelData.effect

            Label {
                id: gesture
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width * (row.heading ? 1 : 0.42)
                wrapMode: Text.Wrap
                text: row.modelData.label
                color: row.heading ? Theme.textFaint : Theme.text
                font.pixelSize: row.heading ? 11 : Theme.normal
                font.weight: row.heading ? Font.DemiBold : Font.Normal
            }
            Label {
                id: effect
                anchors.verticalCenter: parent.verticalCenter
                x: parent.width * 0.42 + 8
                width: parent.width - x
                wrapMode: Text.Wrap
                visible: !row.heading
                color: Theme.textSoft
                text: row.modelData.effect || ""
            }
        }
    }
}
