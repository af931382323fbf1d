// What the trades brought: the running result as a plot, the figures, and the result of each day.
import QtQuick
import Velmora

SimCard {
    id: card

    required property SimViewModel sim

    title: qsTr("PERFORMANCE")
    beside: CheckField {
        objectName: "simToday"
        anchors.verticalCenter: parent ? parent.verticalCenter : undefined
        text: qsTr("Today")
        checked: card.sim.perfToday
        onToggled: card.sim.perfToday = checked
    }

    Item {
        width: parent.width
        height: 112

        EquityPlot {
            id: plot
            objectName: "simEquityPlot"
            anchors.fill: parent
            anchors.topMargin: 18
            anchors.bottomMargin: 6
            sim: card.sim
            gain: Theme.gain
            loss: Theme.loss
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("Running result of the trades")

            MouseArea {
                anchors.fill: parent
                hoverEnabled: true
                acceptedButtons: Qt.NoButton
                onEntered: plot.point(mouseX)  // where it comes to rest at once, it does not move
                onPositionChanged: mouse => plot.point(mouse.x)
                onExited: plot.point(-1)
            }
            Rectangle {
                visible: plot.spot >= 0
                x: Math.round(plot.spotPlace.x)
                width: 1
                height: parent.height
                color: Theme.textFaint
            }
            Rectangle {
                visible: plot.spot >= 0
                x: plot.spotPlace.x - 3
                y: plot.spotPlace.y - 3
                width: 6
                height: 6
                radius: 3
                color: Theme.text
            }
        }
        Label {
            anchors.centerIn: parent
            visible: !card.sim.hasCurve
            color: Theme.textFaint
            font.pixelSize: Theme.small
            text: qsTr("The curve begins with the second trade")
        }
        Label {
            objectName: "simSpot"
            visible: plot.spot >= 0
            x: Math.round(Math.max(0, Math.min(parent.width - width, plot.spotPlace.x - width / 2)))
            font.pixelSize: 11
            color: Theme.textSoft
            text: plot.spotText
        }
    }
    Grid {
        width: parent.width
        columns: card.width < 440 ? 2 : 3
        columnSpacing: 20
        Repeater {
            model: card.sim.metrics
            delegate: Item {
                required property var row
                width: (parent.width - parent.columnSpacing * (parent.columns - 1)) / parent.columns
                height: 22
                Accessible.role: Accessible.StaticText
                Accessible.name: row.key + " " + row.value
                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    font.pixelSize: Theme.small
                    color: Theme.textSoft
                    text: parent.row.key
                    Accessible.ignored: true
                }
                Label {
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    font.pixelSize: Theme.small
                    color: Theme.text
                    text: parent.row.value
                    Accessible.ignored: true
                }
            }
        }
    }
    Label {
        objectName: "simExits"
        topPadding: 6
        width: parent.width
        wrapMode: Text.Wrap
        font.pixelSize: Theme.small
        color: Theme.textSoft
        text: card.sim.exits
    }
    Column {
        width: parent.width
        topPadding: 8
        visible: card.sim.days.count > 0
        Label {
            height: 20
            font.pixelSize: 11
            color: Theme.textFaint
            text: qsTr("P&L BY DAY")
        }
        Repeater {
            model: card.sim.days
            delegate: Item {
                id: day
                required property var row
                width: parent.width
                height: 20
                Accessible.role: Accessible.StaticText
                Accessible.name: row.day + " " + row.value
                Label {
                    id: name
                    width: 76
                    anchors.verticalCenter: parent.verticalCenter
                    font.pixelSize: Theme.small
                    color: Theme.textSoft
                    text: day.row.day
                    Accessible.ignored: true
                }
                Rectangle {  // how large it is beside the largest
                    readonly property real room: parent.width - name.width - 96
                    x: name.width
                    anchors.verticalCenter: parent.verticalCenter
                    width: Math.max(1, Math.round(room * day.row.share))
                    height: 8
                    radius: 2
                    color: Qt.alpha(day.row.gain ? Theme.gain : Theme.loss, 0.7)
                }
                Label {
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    font.pixelSize: Theme.small
                    color: day.row.gain ? Theme.gain : Theme.loss
                    text: day.row.value
                    Accessible.ignored: true
                }
            }
        }
    }
}
