// A button that opens a list to choose from. `rows` holds { label, value } and headings as { label, heading: true }.
import QtQuick
import QtQuick.Templates as T

T.Button {
    id: control

    property var rows: []
    property var current
    property real popupWidth: 120
    property int marked: -1
    property var shownRows: []  // while the list is open they stay what they are
    signal chosen(var value)

    function step(by) {
        for (let i = marked + by; i >= 0 && i < shownRows.length; i += by) {
            if (!shownRows[i].heading) {
                marked = i;
                list.reveal(i);
                return;
            }
        }
    }
    function take(index) {
        popup.close();
        if (index >= 0 && !shownRows[index].heading)
            chosen(shownRows[index].value);
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
    onClicked: popup.visible ? popup.close() : popup.open()

    contentItem: Row {
        spacing: 6
        Label {
            objectName: "choiceText"
            anchors.verticalCenter: parent.verticalCenter
            text: control.text
            font: control.font
        }
        Icon {
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            name: "chevron-down"
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.down || popup.visible ? Theme.pressed : control.hovered ? Theme.hover : "transparent"
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.focus
    }

    Binding {
        target: control
        property: "shownRows"
        value: control.rows
        when: !popup.visible
        restoreMode: Binding.RestoreNone
    }
    T.Popup {
        id: popup
        objectName: "choices"
        y: control.height + 4
        width: control.popupWidth
        height: Math.min(list.contentHeight + 2 * padding, control.Window.height - control.mapToItem(null, 0, 0).y - 48)
        padding: 6
        focus: true
        closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
        onAboutToShow: {
            control.marked = control.shownRows.findIndex(row => !row.heading && row.value === control.current);
            list.reveal(control.marked);
        }
        background: Rectangle {
            radius: 8
            color: Theme.raised
            border.width: 1
            border.color: Theme.lineStrong
        }
        contentItem: Flickable {
            id: list

            function reveal(index) {
                const row = rowsRepeater.itemAt(index);
                if (row)
                    contentY = Math.max(0, Math.min(row.y, Math.max(contentY, row.y + row.height - height)));
            }

            focus: true
            clip: contentHeight > height
            contentHeight: column.height
            boundsBehavior: Flickable.StopAtBounds
            Keys.onDownPressed: control.step(1)
            Keys.onUpPressed: control.step(-1)
            Keys.onReturnPressed: control.take(control.marked)
            Keys.onEnterPressed: control.take(control.marked)

            Rectangle {  // where in a long list one is; its parent moves with the list
                parent: popup.contentItem.parent
                x: parent.width - width - 3
                y: list.y + list.visibleArea.yPosition * list.height
                width: 3
                height: list.visibleArea.heightRatio * list.height
                radius: 1.5
                color: Theme.lineStrong
                visible: list.contentHeight > list.height
            }
            Column {
                id: column
                width: list.width
                Repeater {
                    id: rowsRepeater
                    model: control.shownRows
                    delegate: Rectangle {
                        id: row
                        required property var modelData
                        required property int index
                        readonly property bool heading: modelData.heading === true
                        width: column.width
                        height: heading ? 24 : 28
                        radius: 4
                        color: !heading && index === control.marked ? Theme.pressed : "transparent"
                        Label {
                            x: 10
                            anchors.verticalCenter: parent.verticalCenter
                            anchors.verticalCenterOffset: row.heading ? 2 : 0
                            text: row.modelData.label
                            color: row.heading ? Theme.textFaint : Theme.text
                            font.pixelSize: row.heading ? 11 : Theme.normal
                            font.weight: row.heading ? Font.DemiBold : Font.Normal
                        }
                        Icon {
                            anchors.right: parent.right
                            anchors.rightMargin: 8
                            anchors.verticalCenter: parent.verticalCenter
                            width: 14
                            height: 14
                            visible: !row.heading && row.modelData.value === control.current
                            name: "check"
                            color: Theme.accent
                        }
                        MouseArea {
                            anchors.fill: parent
                            enabled: !row.heading
                            hoverEnabled: true
                            onEntered: control.marked = row.index
                            onClicked: control.take(row.index)
                        }
                    }
                }
            }
        }
    }
}
