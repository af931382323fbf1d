// A price as it is typed. The arrow keys step it by a tick, and so does the wheel while the field has the keyboard.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.TextField {
    id: field

    property string prompt
    readonly property bool bad: problem !== ""
    property string problem  // what would be right, for screen readers
    signal typed(string text)
    signal stepped(int ticks)

    implicitHeight: 34
    leftPadding: 10
    rightPadding: 10
    verticalAlignment: TextInput.AlignVCenter
    font.family: Theme.family
    font.pixelSize: Theme.normal
    color: bad ? Theme.error : Theme.text
    selectionColor: Theme.accentPressed
    selectedTextColor: "white"
    renderType: Text.NativeRendering
    selectByMouse: true
    hoverEnabled: true
    maximumLength: 24
    inputMethodHints: Qt.ImhFormattedNumbersOnly
    Accessible.name: prompt
    Accessible.description: problem
    onTextEdited: typed(text)
    Keys.onPressed: event => {
        const up = (event.key === Qt.Key_Up) - (event.key === Qt.Key_Down);
        if (up === 0 || event.modifiers & (Qt.AltModifier | Qt.ControlModifier | Qt.MetaModifier))
            return;
        stepped(event.modifiers & Qt.ShiftModifier ? 10 * up : up);
        event.accepted = true;
    }

    WheelHandler {
        property real turned: 0
        enabled: field.activeFocus
        target: null
        onWheel: event => {
            turned += event.angleDelta.y;
            const steps = Math.trunc(turned / 120);
            turned -= steps * 120;
            if (steps !== 0)
                field.stepped(steps);
        }
    }
    Label {
        x: field.leftPadding
        width: field.width - field.leftPadding - field.rightPadding
        height: field.height
        visible: field.length === 0 && field.preeditText === ""
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        color: Theme.textFaint
        text: field.prompt
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: Theme.radius
        color: Theme.background
        border.width: field.activeFocus || field.bad ? 2 : 1
        border.color: field.bad ? Theme.error : field.activeFocus ? Theme.focus : field.hovered ? Theme.lineStrong : Theme.line
    }
}
