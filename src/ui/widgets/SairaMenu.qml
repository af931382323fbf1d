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
    property var ownList: popup  // that it opens
    property bool isMenu: true  // without a list it is pressed to go on to the next
    property string tip
    signal chosen(var value)
    signal pressedPlain

    function press() {
        if (!isMenu)
            pressedPlain();
        else
            ownList.visible ? ownList.close() : ownList.open();
    }

    text: {
        const option = options.find(one => !one.heading && one.value === selection);
        return option ? option.label : placeholder;
    }
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: 30
    leftPadding: isMenu ? 12 : 10
    rightPadding: isMenu ? 8 : 10
    hoverEnabled: true
    focusPolicy: Qt.TabFocus
    font.family: Theme.family
    font.pixelSize: 14
    font.weight: Font.DemiBold
    Keys.onDownPressed: event => {
        if (isMenu)
            ownList.open();
        else
            event.accepted = false;
    }
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    onClicked: press()

    contentItem: Row {
        spacing: 6
        Label {
            anchors.verticalCenter: parent.verticalCenter
            text: control.text
            font: control.font
            color: control.enabled ? Theme.text : Theme.textSoft
        }
        Icon {
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            visible: control.isMenu && control.enabled
            name: "chevrons-up-down"
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.down || control.ownList.visible ? Theme.pressed : control.hovered ? Theme.hover : "transparent"
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
    Tip {
        text: control.tip
        wanted: (control.hovered || control.visualFocus) && !control.down && !control.ownList.visible
    }
}
