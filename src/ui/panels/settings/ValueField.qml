// A value as text. Enter takes it, Escape gives it up; a bad text marks the field and changes nothing.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.TextField {
    id: field

    required property SettingsViewModel settings
    required property var part
    readonly property string kept: settings.texts[part.name] || ""
    readonly property string problem: settings.problems[part.name] || ""
    property bool edited: false  // what stands there is the person's
    signal ended  // by Enter or Escape

    function begin(typed) {
        edited = typed !== "";
        forceActiveFocus(Qt.OtherFocusReason);
        if (typed === "")
            return;
        text = typed;
        cursorPosition = typed.length;
        deselect();
    }
    function take() {
        if (!edited)
            return problem === "";
        edited = !settings.type(part.name, text);
        if (!edited)
            text = kept;
        return !edited;
    }

    objectName: "field " + part.name
    implicitHeight: 24
    leftPadding: 4
    rightPadding: 4
    horizontalAlignment: TextInput.AlignRight
    verticalAlignment: TextInput.AlignVCenter
    font.family: Theme.family
    font.pixelSize: Theme.small
    color: problem !== "" ? Theme.error : Theme.text
    selectionColor: Theme.accentPressed
    selectedTextColor: "white"
    renderType: Text.NativeRendering
    selectByMouse: true
    hoverEnabled: true
    Accessible.name: part.title
    Accessible.description: problem === "" ? "" : qsTr("This is not %1").arg(problem)
    Component.onCompleted: {
        if (problem !== "")
            settings.giveUp(part.name);  // the text that it was about went with an earlier field
        text = kept;
    }
    onTextEdited: edited = true
    onKeptChanged: if (!edited) text = kept
    onProblemChanged: {
        if (problem === "" && !activeFocus) {
            edited = false;
            text = kept;
        }
    }
    onActiveFocusChanged: {
        if (!activeFocus)
            take();
        else if (!edited)
            Qt.callLater(selectAll);  // after the press that brought the keyboard here
    }
    onAccepted: if (take()) ended()
    Keys.onEscapePressed: event => {
        event.accepted = edited;
        edited = false;
        settings.giveUp(part.name);
        text = kept;
        ended();
    }

    background: Rectangle {
        radius: 4
        color: field.activeFocus || field.problem !== "" ? Theme.background : field.hovered ? Theme.hover : "transparent"
        border.width: field.activeFocus ? 2 : 1
        border.color: field.problem !== "" ? Theme.error : field.activeFocus ? Theme.focus
                                                                             : field.hovered ? Theme.lineStrong : Theme.line
    }
    T.Popup {  // what would be right
        visible: field.problem !== "" && field.activeFocus
        x: parent.width - width
        y: parent.height + 4
        width: hint.implicitWidth + 16
        height: hint.implicitHeight + 8
        leftPadding: 8
        topPadding: 4
        closePolicy: T.Popup.NoAutoClose
        contentItem: Label {
            id: hint
            font.pixelSize: 11
            color: Theme.error
            text: field.problem
            Accessible.ignored: true
        }
        background: Rectangle {
            radius: 4
            color: Theme.background
            border.width: 1
            border.color: Theme.error
        }
    }
}
