// The time to the forming bar's close on the price axis, and New York's time in the chart's corner.
import QtQuick
import Velmora

Item {
    id: view

    required property ClockViewModel clocks
    required property HudState hud
    property real timeAxis: 0
    readonly property rect clockBox: corner.visible ? Qt.rect(corner.x, corner.y, corner.width, corner.height)
                                                    : Qt.rect(0, 0, 0, 0)

    Rectangle {
        objectName: "countdown"
        visible: countdown.text !== "" && view.hud.countdownFrom < view.hud.countdownTo
        x: view.width - width - 3
        y: view.hud.countdownFrom
        width: 38
        height: view.hud.countdownTo - view.hud.countdownFrom
        radius: 3
        color: Theme.hover
        Accessible.role: Accessible.StaticText
        Accessible.name: qsTr("To the bar's close: %1").arg(countdown.text)
        Label {
            id: countdown
            anchors.fill: parent
            anchors.margins: 2
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 8
            font.pixelSize: 11
            color: Theme.textSoft
            text: view.clocks.countdown
        }
    }
    Rectangle {
        id: corner
        objectName: "nyClock"
        visible: clock.text !== ""
        x: 8
        y: view.height - view.timeAxis - height - 6
        width: row.width + 12
        height: 18
        radius: 3
        color: "#b80a0a0a"
        Row {
            id: row
            x: 6
            anchors.verticalCenter: parent.verticalCenter
            spacing: 8
            Label {
                id: clock
                width: Math.ceil(widest.width)  // of any time, so that it does not change
                font.pixelSize: 11
                color: Theme.textSoft
                text: view.clocks.clock
            }
            Label {
                objectName: "practiceMark"
                visible: text !== ""
                font.pixelSize: 11
                color: Theme.gold
                text: view.clocks.practice
            }
        }
        TextMetrics {
            id: widest
            font: clock.font
            text: "NY 88:88"
        }
    }
}
