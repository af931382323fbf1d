// A one-line text field; `prompt` stands in it while it is empty.
import QtQuick
import QtQuick.Templates as T

FocusScope {
    id: entry

    property alias text: field.text
    property alias echoMode: field.echoMode
    property alias inputMethodHints: field.inputMethodHints
    property alias field: field
    property string name  // for screen readers
    property string prompt
    property real reserved: 0  // room at the right edge for a button
    signal accepted
    signal typed(var event)  // each key before the field takes it

    implicitWidth: 280
    implicitHeight: field.height

    T.TextField {
        id: field
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
        Accessible.name: entry.name
        Accessible.description: entry.prompt
        onAccepted: entry.accepted()
        Keys.onPressed: event => {
            entry.typed(event);
            event.accepted = false;
        }
        Label {
            x: field.leftPadding
            width: field.width - field.leftPadding - field.rightPadding
            height: field.height
            visible: field.length === 0 && field.preeditText === ""
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            font.pixelSize: field.font.pixelSize
            color: Theme.textFaint
            text: entry.prompt
            Accessible.ignored: true
        }
        background: Rectangle {
            radius: Theme.radius
            color: field.enabled ? Theme.background : Theme.surface
            border.width: field.activeFocus ? 2 : 1
            border.color: field.activeFocus ? Theme.focus : field.hovered ? Theme.lineStrong : Theme.line
        }
    }
}
