// The orders that rest.
import QtQuick
import Velmora

SimCard {
    id: card

    required property SimViewModel sim

    title: sim.ordersHeading
    empty: sim.orders.count === 0 ? qsTr("none") : ""
    beside: SmallButton {
        objectName: "simCancelAll"
        anchors.verticalCenter: parent ? parent.verticalCenter : undefined
        visible: card.sim.orders.count > 0
        text: qsTr("CANCEL ALL")
        barred: card.sim.barred
        onPressedOnce: card.sim.cancelAll()
    }

    Repeater {
        model: card.sim.orders
        delegate: Item {
            id: one

            required property var row
            required property int index
            objectName: "simOrder " + index
            width: parent.width
            height: 30

            Label {
                id: side
                width: 36
                height: parent.height
                verticalAlignment: Text.AlignVCenter
                font.weight: Font.DemiBold
                font.pixelSize: Theme.small
                color: one.row.buys ? Theme.gain : Theme.loss
                text: one.row.side
            }
            Label {
                anchors.left: side.right
                anchors.right: price.left
                anchors.rightMargin: 6
                height: parent.height
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                font.pixelSize: Theme.small
                text: one.row.what
            }
            Label {
                id: price
                anchors.right: away.left
                anchors.rightMargin: 4
                height: parent.height
                verticalAlignment: Text.AlignVCenter
                font.pixelSize: Theme.small
                text: one.row.price
            }
            IconButton {
                id: away
                objectName: "simCancel"
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                implicitWidth: 28
                implicitHeight: 28
                icon24: "x"
                text: qsTr("Cancel %1 %2 %3").arg(one.row.side).arg(one.row.what).arg(one.row.price)
                Accessible.name: qsTr("%1, order %2").arg(text).arg(one.index + 1)  // two may be alike
                barred: card.sim.barred
                onClicked: if (barred === "") card.sim.cancel(one.row.key)
            }
        }
    }
}
