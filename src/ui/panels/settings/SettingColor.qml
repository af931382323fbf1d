// A colour, and the picker for another one.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.Button {
    id: well

    required property SettingsViewModel settings
    required property var part
    property real room: 0
    readonly property string hex: settings.values[part.name] || "#ffffff"
    signal entered

    objectName: "control " + part.name
    implicitWidth: 36
    implicitHeight: 24
    hoverEnabled: true
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.ColorChooser
    Accessible.name: part.title + ", " + hex
    onActiveFocusChanged: if (activeFocus) entered()
    onClicked: picker.visible ? picker.close() : picker.open()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: 4
        color: well.hex
        border.width: well.visualFocus || picker.visible ? 2 : 1
        border.color: well.visualFocus || picker.visible ? Theme.focus : well.hovered ? Theme.text : Qt.rgba(1, 1, 1, 0.2)
    }

    ColorPicker {
        id: picker
        objectName: "picker"
        title: well.part.title
        hex: well.hex
        onPicked: hex => well.settings.set(well.part.name, hex)
        onGestureBegan: well.settings.beginGesture()
        onGestureEnded: well.settings.endGesture()
    }
}
