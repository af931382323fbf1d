// One strike of the ladder: its newest flows, and room for its sparkline.
import QtQuick
import Velmora

Rectangle {
    id: box

    required property string label
    required property real call  // NaN: not known
    required property real put
    required property bool atm
    required property HfPressureViewModel pressure
    property bool still: false
    // of the sparkline, from the box's own corner
    readonly property rect sparkRoom: Qt.rect(4, 56, width - 8, height - 62)

    radius: 4
    color: atm ? "#161616" : "#131313"
    border.width: atm ? 2 : 1
    border.color: atm ? Qt.rgba(1, 1, 1, 0.6) : "#1f1f1f"
    Accessible.role: Accessible.StaticText
    Accessible.name: (atm ? qsTr("Strike %1 at the money, call %2, put %3") : qsTr("Strike %1, call %2, put %3"))
                     .arg(label).arg(pressure.flowText(call)).arg(pressure.flowText(put))  // and no steps on the way

    component FlowNumber: TweenNumber {
        anchors.horizontalCenter: parent.horizontalCenter
        // the longest do not fit
        scale: Math.min(1, (box.width - 6) / Math.max(1, width))
        format: value => box.pressure.flowText(value)
        nothing: box.pressure.unknown
        still: box.still
        coarse: true
        Accessible.ignored: true
    }

    Label {
        y: 4
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, parent.width - 6)
        height: 16  // the same line in all boxes, whatever size it takes
        verticalAlignment: Text.AlignVCenter
        text: box.label
        font.weight: Font.DemiBold
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 8
        color: box.atm ? "#cfd4d9" : Qt.rgba(1, 1, 1, 0.53)
        Accessible.ignored: true
    }
    FlowNumber {
        id: callNumber
        y: 20
        target: box.call
        color: Theme.hudTeal
    }
    FlowNumber {
        id: putNumber
        y: 36
        target: box.put
        color: Theme.hudRed
    }
}
