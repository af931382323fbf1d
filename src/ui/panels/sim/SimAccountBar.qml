// What the account is worth.
import QtQuick
import Velmora

Item {
    id: bar

    required property SimViewModel sim

    implicitHeight: 44

    component Figure: Item {
        property string caption
        property alias target: number.target
        property bool coloured: false
        height: bar.height

        Accessible.role: Accessible.StaticText
        Accessible.name: caption + " " + number.text
        Label {
            font.pixelSize: 11
            color: Theme.textFaint
            text: parent.caption
            Accessible.ignored: true
        }
        TweenNumber {
            id: number
            y: 18
            speed: 0.75  // at the target within a quarter of a second
            font: Qt.font({ family: Theme.family, pixelSize: bar.width < 300 ? 13 : 15, weight: Font.DemiBold })
            format: value => bar.sim.num(value)
            colorOf: value => !parent.coloured || value === 0 ? Theme.text : value > 0 ? Theme.gain : Theme.loss
            Accessible.ignored: true

            Connections {
                target: bar.sim
                function onStartedOver() {
                    number.jump();
                }
            }
        }
    }

    Row {
        anchors.fill: parent
        Figure {
            objectName: "simBalance"
            width: parent.width / 3
            caption: qsTr("BALANCE")
            target: bar.sim.balance
        }
        Figure {
            objectName: "simEquity"
            width: parent.width / 3
            caption: qsTr("EQUITY")
            target: bar.sim.equity
        }
        Figure {
            objectName: "simDayPnL"
            width: parent.width / 3
            caption: qsTr("DAY P&L")
            coloured: true
            target: bar.sim.dayPnL
        }
    }
}
