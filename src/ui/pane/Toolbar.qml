// The row above a chart: what it shows, how the connection stands, the way out.
import QtQuick
import Velmora

Rectangle {
    id: bar

    required property PaneViewModel pane

    function symbolRows() {
        const rows = [];
        const add = (heading, symbols) => {
            if (symbols.length > 0)
                rows.push({ label: heading, heading: true });
            for (const symbol of symbols)
                rows.push({ label: symbol, value: symbol });
        };
        add(qsTr("FUTURES"), pane.futures);
        add(qsTr("STOCKS"), pane.stocks);
        return rows;
    }

    implicitHeight: 44
    color: Theme.surface

    Row {
        id: choices
        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4

        ChoiceButton {
            objectName: "symbolChoice"
            text: bar.pane.symbol === "" ? qsTr("Symbol") : bar.pane.symbol
            rows: bar.symbolRows()
            current: bar.pane.symbol
            popupWidth: 148
            Accessible.name: qsTr("Symbol")
            onChosen: value => bar.pane.switchSymbol(value)
        }
        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: 1
            height: 18
            color: Theme.lineStrong
        }
        ChoiceButton {
            objectName: "timeframeChoice"
            text: bar.pane.timeframe + "m"
            rows: [1, 2, 3, 5, 15, 30, 60].map(minutes => ({ label: minutes + "m", value: minutes }))
            current: bar.pane.timeframe
            popupWidth: 96
            font.weight: Font.Normal
            Accessible.name: qsTr("Timeframe")
            onChosen: value => bar.pane.setTimeframe(value)
        }
    }
    Row {
        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.gap

        Rectangle {
            id: lamp
            objectName: "lamp"
            anchors.verticalCenter: parent.verticalCenter
            width: 8
            height: 8
            radius: 4
            color: bar.pane.connLimited ? Theme.error : bar.pane.connected ? Theme.accent : Theme.warning
        }
        Label {
            objectName: "status"
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, bar.width - choices.width - 120)
            text: bar.pane.status
            color: Theme.textSoft
            font.pixelSize: Theme.small
            elide: Text.ElideRight
        }
        Item {
            width: 2
            height: 1
        }
        IconButton {
            objectName: "signOut"
            text: qsTr("Sign out")
            icon24: "log-out"
            onClicked: bar.pane.signOut()
        }
    }
    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.line
    }
}
