// A quiet button within a card; `barred` says why it does nothing.
import QtQuick
import Velmora

PushButton {
    id: control

    property string barred
    signal pressedOnce

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: 28
    leftPadding: 10
    rightPadding: 10
    font.pixelSize: Theme.small
    opacity: barred === "" ? 1 : 0.45
    Accessible.name: text
    Accessible.description: barred
    onClicked: if (barred === "") pressedOnce()

    Tip {
        text: control.barred
        wanted: (control.hovered || control.visualFocus) && !control.down
    }
}
