// The open position's result, over the place that its line's badge leaves for it.
import QtQuick
import Velmora

Label {
    required property EntryPillState pill

    visible: pill.shown
    x: pill.box.x
    y: pill.box.y
    width: pill.box.width
    height: pill.box.height
    horizontalAlignment: Text.AlignRight
    verticalAlignment: Text.AlignVCenter
    fontSizeMode: Text.HorizontalFit
    minimumPixelSize: 8
    font.pixelSize: 11
    color: pill.gain ? Theme.hudTeal : Theme.hudRed
    text: pill.text
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("Open result: %1").arg(pill.text)
}
