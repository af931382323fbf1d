// The newest trades or fills, and the way to all of them.
import QtQuick
import Velmora

SimCard {
    id: card

    required property SimViewModel sim
    required property RowsModel rows
    required property string kind  // "trades" or "fills"
    signal allAsked(string kind)

    empty: rows.count === 0 ? qsTr("none") : ""
    beside: SmallButton {
        objectName: "simAll " + card.kind
        anchors.verticalCenter: parent ? parent.verticalCenter : undefined
        visible: card.rows.count > 0
        text: qsTr("All…")
        Accessible.name: card.kind === "trades" ? qsTr("All trades") : qsTr("All fills")
        onPressedOnce: card.allAsked(card.kind)
    }

    Repeater {
        model: card.rows
        delegate: Item {
            id: one
            required property var row
            width: parent.width
            height: 22
            Accessible.role: Accessible.ListItem
            Accessible.name: [row.time, row.head, row.what, row.end].join(" ")

            Label {
                id: time
                width: card.kind === "trades" ? 38 : 56
                anchors.verticalCenter: parent.verticalCenter
                font.pixelSize: 11
                color: Theme.textFaint
                text: one.row.time
            }
            Label {
                id: head
                anchors.left: time.right
                anchors.verticalCenter: parent.verticalCenter
                font.pixelSize: 11
                color: one.row.buys ? Theme.gain : Theme.loss
                text: one.row.head
            }
            Label {
                anchors.left: head.right
                anchors.leftMargin: 6
                anchors.right: end.left
                anchors.rightMargin: 6
                anchors.verticalCenter: parent.verticalCenter
                elide: Text.ElideRight
                font.pixelSize: 11
                color: Theme.textSoft
                text: one.row.what
            }
            Label {
                id: end
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                font.pixelSize: 11
                color: one.row.tone > 0 ? Theme.gain : one.row.tone < 0 ? Theme.loss : Theme.textSoft
                text: one.row.end
            }
        }
    }
}
