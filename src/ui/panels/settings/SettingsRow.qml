// One line of the panel: a label with the controls of its settings, or a button. A double click on the label, or Delete
// on a control, brings the defaults back.
import QtQuick
import Velmora

Item {
    id: line

    required property SettingsViewModel settings
    required property var row  // { id, label, parts }
    readonly property string key: settings.keys[row.id] || ""
    readonly property string title: key === "" ? row.label : row.label + " (" + key + ")"
    readonly property real roomForParts: width - 112
    signal asked(string action)
    signal entered(Item item)

    objectName: "setting " + row.id
    implicitHeight: row.parts.length > 0 ? 28 : button.height
    Keys.onDeletePressed: settings.restoreDefaults(row.id)

    Label {
        objectName: "label"
        width: parts.x - 8
        height: parent.height
        visible: line.row.parts.length > 0
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        font.pixelSize: Theme.small
        color: Theme.textSoft
        text: line.title

        MouseArea {
            anchors.fill: parent
            onDoubleClicked: {
                line.forceActiveFocus(Qt.MouseFocusReason);  // what is being typed ends before
                line.settings.restoreDefaults(line.row.id);
            }
        }
    }
    Row {
        id: parts
        anchors.right: parent.right
        height: parent.height
        spacing: 8
        Repeater {
            model: line.row.parts
            Loader {
                id: part
                required property var modelData
                anchors.verticalCenter: parent.verticalCenter
                Component.onCompleted: setSource(modelData.control + ".qml",
                                                 { settings: line.settings, part: modelData, room: line.roomForParts })
                Binding {
                    target: part.item
                    property: "room"
                    value: line.roomForParts
                }
                Binding {
                    target: part.item
                    property: "enabled"
                    value: !part.modelData.needsSymbol || line.settings.hasSymbol
                }
                Connections {
                    target: part.item
                    function onEntered() {
                        line.entered(part.item);
                    }
                }
            }
        }
    }
    Loader {
        id: button
        width: parent.width
        active: line.row.parts.length === 0
        sourceComponent: SettingAction {
            settings: line.settings
            action: line.row.id
            title: line.title
            onCarriedOut: line.asked(line.row.id)
            onEntered: line.entered(this)
        }
    }
}
