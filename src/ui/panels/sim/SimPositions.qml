// What is held, and what closes or protects it.
import QtQuick
import Velmora

SimCard {
    id: card

    required property SimViewModel sim

    title: sim.positionsHeading
    empty: sim.positions.count === 0 ? qsTr("flat") : ""

    Repeater {
        model: card.sim.positions
        delegate: Item {
            id: one

            required property var row
            required property int index
            objectName: "simPosition " + row.key
            width: parent.width
            height: 64

            Row {
                height: 28
                spacing: 8
                Label {
                    height: parent.height
                    verticalAlignment: Text.AlignVCenter
                    font.weight: Font.DemiBold
                    color: one.row.long ? Theme.gain : Theme.loss
                    text: one.row.size
                }
                Label {
                    height: parent.height
                    verticalAlignment: Text.AlignVCenter
                    color: one.row.elsewhere ? Theme.warning : Theme.text
                    text: one.row.name
                }
                Label {
                    height: parent.height
                    verticalAlignment: Text.AlignVCenter
                    color: Theme.textSoft
                    text: one.row.average
                }
            }
            Figures {
                objectName: "simPnL"
                anchors.right: parent.right
                y: 3
                font: Qt.font({ family: Theme.family, pixelSize: Theme.normal, weight: Font.DemiBold })
                text: one.row.pnl
                color: one.row.gain ? Theme.gain : Theme.loss
            }
            Row {
                y: 30
                spacing: 6
                SmallButton {
                    objectName: "simFlat"
                    text: qsTr("FLAT")
                    barred: card.sim.barred
                    Accessible.name: qsTr("Close the position of %1").arg(one.row.name)
                    onPressedOnce: card.sim.flatten(one.row.key)
                }
                SmallButton {
                    objectName: "simAddSl"
                    visible: text !== ""
                    text: one.row.addSl
                    barred: card.sim.barred
                    Accessible.name: qsTr("%1 for %2").arg(text).arg(one.row.name)
                    onPressedOnce: card.sim.protect(one.row.key, "SL")
                }
                SmallButton {
                    objectName: "simAddTp"
                    visible: text !== ""
                    text: one.row.addTp
                    barred: card.sim.barred
                    Accessible.name: qsTr("%1 for %2").arg(text).arg(one.row.name)
                    onPressedOnce: card.sim.protect(one.row.key, "TP")
                }
            }
        }
    }
}
