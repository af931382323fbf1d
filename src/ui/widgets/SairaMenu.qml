// A button that shows the selected option and opens the list of all. `options` holds { label, value }, and headings as
// { label, heading: true }.
import QtQuick
import QtQuick.Templates as T

T.Button {
    id: control

    property var options: []
    property var selection
    property string placeholder  // while what is selected is no option
    property alias listWidth: popup.width
    property alias shownRows: popup.shownRows
    signal chosen(var value)

    text: {
        const option = options.find(one => !one.heading && one.value === selection);
        return option ? option.label : placeholder;
    }
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: 30
    leftPadding: 12
    rightPadding: 8
    hoverEnabled: true
    focusPolicy: Qt.TabFocus
    font.family: Theme.family
    font.pixelSize: 14
    font.weight: Font.DemiBold
    Keys.onDownPressed: popup.open()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    onClicked: popup.visible ? popup.close() : popup.open()

    contentItem: Row {
        spacing: 6
        Label {
            anchors.verticalCenter: parent.verticalCenter
            text: control.text
            font: control.font
        }
        Icon {
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            name: "chevrons-up-down"
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.down || popup.visible ? Theme.pressed : control.hovered ? Theme.hover : "transparent"
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.focus
    }

    PopupList {
        id: popup
        objectName: "choices"
        width: 120
        rows: control.options
        current: control.selection
        onChosen: value => control.chosen(value)
    }
}
