// A button: quiet, or `primary` for the one action that a form is about.
import QtQuick
import QtQuick.Templates as T

T.Button {
    id: control

    property bool primary: false

    implicitWidth: Math.max(80, contentItem.implicitWidth + leftPadding + rightPadding)
    implicitHeight: 36
    leftPadding: 16
    rightPadding: 16
    hoverEnabled: true
    Keys.onReturnPressed: event => { if (!event.isAutoRepeat) clicked(); }
    Keys.onEnterPressed: event => { if (!event.isAutoRepeat) clicked(); }
    Keys.onPressed: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }  // held, it is one press
    Keys.onReleased: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }
    focusPolicy: Qt.StrongFocus
    font.family: Theme.family
    font.pixelSize: Theme.normal
    font.weight: primary ? Font.DemiBold : Font.Normal

    contentItem: Label {
        text: control.text
        font: control.font
        color: !control.enabled ? Theme.textFaint : control.primary ? "#04110f" : Theme.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    background: Rectangle {
        radius: Theme.radius
        color: {
            if (!control.enabled)
                return Theme.raised;
            if (control.primary)
                return control.down ? Theme.accentPressed : control.hovered ? Theme.accentHover : Theme.accent;
            return control.down ? Theme.pressed : control.hovered ? Theme.hover : Theme.raised;
        }
        border.width: control.visualFocus ? 2 : control.primary && control.enabled ? 0 : 1
        border.color: control.visualFocus ? Theme.focus : Theme.line
    }
}
