// A number that keys step: arrows by one step, with Shift by ten, Home and End to its limits. Enter or a digit begins to
// type it; a held key is one gesture.
import QtQuick
import Velmora

Item {
    id: control

    required property SettingsViewModel settings
    required property var part
    property real room: 0
    property ValueField field
    readonly property real value: Number(settings.values[part.name]) || 0
    readonly property real minimumValue: part.least
    readonly property real maximumValue: part.most
    readonly property real stepSize: part.step
    readonly property bool takesDigits: true
    property bool pointed: false  // the pointer has brought the keyboard
    readonly property bool marked: activeFocus && !pointed
    signal entered

    function take() {
        pointed = true;
        forceActiveFocus(Qt.MouseFocusReason);
    }

    objectName: "control " + part.name
    implicitHeight: 24
    opacity: enabled ? 1 : 0.4
    activeFocusOnTab: true
    Accessible.name: part.title
    Accessible.description: settings.texts[part.name] || ""
    Accessible.focusable: true
    onActiveFocusChanged: {
        if (activeFocus) {
            entered();
        } else {
            pointed = false;
            settings.endGesture();
        }
    }
    Keys.onPressed: event => {
        if (!activeFocus || event.modifiers & (Qt.AltModifier | Qt.ControlModifier | Qt.MetaModifier))
            return;
        const by = { [Qt.Key_Left]: -1, [Qt.Key_Down]: -1, [Qt.Key_Right]: 1, [Qt.Key_Up]: 1 }[event.key];
        const end = event.key === Qt.Key_Home || event.key === Qt.Key_End;
        if (by || end) {
            pointed = false;
            settings.beginGesture();
            if (end)
                settings.toEnd(part.name, event.key === Qt.Key_End);
            else
                settings.step(part.name, by * (event.modifiers & Qt.ShiftModifier ? 10 : 1));
        } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
            field.begin("");
        } else if (event.text >= "0" && event.text <= "9") {
            field.begin(event.text);
        } else {
            return;
        }
        event.accepted = true;
    }
    Keys.onReleased: event => {
        if (activeFocus && !event.isAutoRepeat)
            settings.endGesture();
    }
}
