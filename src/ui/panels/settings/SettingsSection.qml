// A heading with its rows.
import QtQuick
import Velmora

Rectangle {
    id: card

    required property SettingsViewModel settings
    required property var section  // { id, title, rows }
    signal asked(string action)
    signal entered(Item item)  // the keyboard has come to a control

    implicitHeight: rows.implicitHeight + 20
    radius: 8
    color: Theme.raised
    visible: settings.shown[section.id] !== false
    Accessible.role: Accessible.Grouping
    Accessible.name: section.title

    Column {
        id: rows
        x: 12
        y: 8
        width: parent.width - 24
        Label {
            height: 28
            verticalAlignment: Text.AlignVCenter
            font.weight: Font.DemiBold
            text: card.section.title
        }
        Repeater {
            model: card.section.rows
            SettingsRow {
                required property var modelData
                width: rows.width
                settings: card.settings
                row: modelData
                visible: card.settings.shown[modelData.id] !== false
                onAsked: action => card.asked(action)
                onEntered: item => card.entered(item)
            }
        }
    }
}
