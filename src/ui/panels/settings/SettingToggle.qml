// A switch.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.Switch {
    id: control

    required property SettingsViewModel settings
    required property var part
    property real room: 0
    readonly property bool on: settings.values[part.name] === true
    signal entered

    objectName: "control " + part.name
    implicitWidth: 32
    implicitHeight: 24
    hoverEnabled: true
    checked: on
    Accessible.name: part.title
    onActiveFocusChanged: if (activeFocus) entered()
    onToggled: {
        settings.set(part.name, checked);
        checked = Qt.binding(() => on);
    }
    Keys.onReturnPressed: event => { if (!event.isAutoRepeat) settings.set(part.name, !on); }
    Keys.onEnterPressed: event => { if (!event.isAutoRepeat) settings.set(part.name, !on); }
    Keys.onPressed: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }  // held, it is one press
    Keys.onReleased: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }

    indicator: Rectangle {
        width: 32
        height: 18
        anchors.verticalCenter: parent.verticalCenter
        radius: 9
        color: !control.checked ? control.hovered ? Theme.pressed : Theme.line
                                : control.hovered ? Theme.accentHover : Theme.accent
        Rectangle {
            x: control.checked ? parent.width - width - 3 : 3
            anchors.verticalCenter: parent.verticalCenter
            width: 12
            height: 12
            radius: 6
            color: control.checked ? "#04110f" : Theme.textSoft
            Behavior on x {
                enabled: !Motion.reduced
                NumberAnimation {
                    duration: 150
                    easing.type: Easing.InOutQuad
                }
            }
        }
        Rectangle {
            anchors.fill: parent
            anchors.margins: -3
            visible: control.visualFocus
            radius: 12
            color: "transparent"
            border.width: 2
            border.color: Theme.focus
        }
    }
}
