// A length of time to choose from, and whether it is the one that is shown.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.AbstractButton {
    id: pill

    required property int minutes
    property bool current: false

    implicitWidth: Math.ceil(label.implicitWidth) + 8
    implicitHeight: 20
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Keys.onReturnPressed: event => { if (!event.isAutoRepeat) clicked(); }
    Keys.onEnterPressed: event => { if (!event.isAutoRepeat) clicked(); }
    Accessible.role: Accessible.RadioButton
    Accessible.name: minutes === 1 ? qsTr("1 minute") : qsTr("%1 minutes").arg(minutes)
    Accessible.checked: current

    contentItem: Label {
        id: label
        text: qsTr("%1m").arg(pill.minutes)
        font.weight: pill.current ? Font.DemiBold : Font.Normal
        color: pill.current || pill.hovered ? "white" : Qt.rgba(1, 1, 1, 0.53)
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: 4
        color: Qt.rgba(1, 1, 1, pill.current || pill.down ? 0.2 : 0.1)
        border.width: pill.visualFocus ? 2 : 1
        border.color: pill.visualFocus ? Theme.focus : Qt.rgba(1, 1, 1, pill.current ? 0.55 : 0.2)
    }
}
