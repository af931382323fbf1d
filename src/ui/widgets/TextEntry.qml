// A one-line text field with its caption above.
import QtQuick
import QtQuick.Templates as T

FocusScope {
    id: entry

    property alias text: field.text
    property alias echoMode: field.echoMode
    property alias inputMethodHints: field.inputMethodHints
    property alias field: field
    property string caption
    property real reserved: 0  // room at the right edge for a button
    signal accepted

    implicitWidth: 280
    implicitHeight: captionLabel.height + 4 + field.height

    Label {
        id: captionLabel
        text: entry.caption
        color: Theme.textSoft
        font.pixelSize: Theme.small
    }
    T.TextField {
        id: field
        anchors.top: captionLabel.bottom
        anchors.topMargin: 4
        width: parent.width
        height: 38
        leftPadding: 12
        rightPadding: 12 + entry.reserved
        verticalAlignment: TextInput.AlignVCenter
        font.family: Theme.family
        font.pixelSize: 14
        color: enabled ? Theme.text : Theme.textFaint
        selectionColor: Theme.accentPressed
        selectedTextColor: "white"
        renderType: Text.NativeRendering
        selectByMouse: true
        hoverEnabled: true
        focus: true
        Accessible.name: entry.caption
        onAccepted: entry.accepted()
        background: Rectangle {
            radius: Theme.radius
            color: field.enabled ? Theme.background : Theme.surface
            border.width: field.activeFocus ? 2 : 1
            border.color: field.activeFocus ? Theme.focus : field.hovered ? Theme.lineStrong : Theme.line
        }
    }
}
