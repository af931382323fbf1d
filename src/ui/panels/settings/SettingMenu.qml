// One of several values.
import QtQuick
import Velmora

SairaMenu {
    id: menu

    required property SettingsViewModel settings
    required property var part
    property real room: 0
    signal entered

    objectName: "control " + part.name
    implicitHeight: 24
    leftPadding: 8
    rightPadding: 4
    font.pixelSize: Theme.small
    font.weight: Font.Normal
    listWidth: 144
    options: part.choices
    selection: settings.values[part.name]
    placeholder: String(selection)
    Accessible.role: Accessible.ComboBox
    Accessible.name: part.title + ", " + text
    onActiveFocusChanged: if (activeFocus) entered()
    onChosen: value => settings.set(part.name, value)
}
