// The list under a button. `rows` holds { label, value } with an optional `key`, the keys that do the same, `on` for
// what is on and `barred` for what cannot be chosen now; headings as { label, heading: true } and lines as { separator:
// true }. The row of `current`, and what is on, bears a mark.
import QtQuick
import QtQuick.Templates as T

T.Popup {
    id: popup

    property var rows: []
    property var current
    property int marked: -1
    property var shownRows: []  // while the list is open they stay what they are
    property var pointedAt  // where the pointer was heard of last
    signal chosen(var value)

    // A row that comes to lie under a resting pointer is not pointed at.
    function point(index, at) {
        if (pointedAt !== undefined && (pointedAt.x !== at.x || pointedAt.y !== at.y))
            marked = index;
        pointedAt = at;
    }
    function canTake(index) {
        return index >= 0 && !shownRows[index].heading && !shownRows[index].separator && !shownRows[index].barred;
    }
    function step(by) {
        for (let i = marked < 0 && by < 0 ? shownRows.length - 1 : marked + by; i >= 0 && i < shownRows.length; i += by) {
            if (canTake(i)) {
                marked = i;
                list.reveal(i);
                return;
            }
        }
    }
    function take(index) {
        close();
        if (canTake(index))
            chosen(shownRows[index].value);
    }

    y: parent.height + 4
    height: Math.min(list.contentHeight + 2 * padding, parent.Window.height - parent.mapToItem(null, 0, 0).y - 48)
    padding: 6
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    onAboutToShow: {
        pointedAt = undefined;
        marked = shownRows.findIndex((row, i) => canTake(i) && row.value === current);
        list.reveal(marked);
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
        Keys.onDownPressed: popup.step(1)
        Keys.onUpPressed: popup.step(-1)
        Keys.onReturnPressed: popup.take(popup.marked)
        Keys.onEnterPressed: popup.take(popup.marked)

        Binding {
            target: popup
            property: "shownRows"
            value: popup.rows
            when: !popup.visible
            restoreMode: Binding.RestoreNone
        }
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
                model: popup.shownRows
                delegate: Rectangle {
                    id: row
                    required property var modelData
                    required property int index
                    readonly property bool heading: modelData.heading === true
                    readonly property bool separator: modelData.separator === true
                    objectName: separator || heading ? "" : "row " + modelData.value
                    width: column.width
                    height: separator ? 9 : heading ? 24 : 28
                    radius: 4
                    color: popup.canTake(index) && index === popup.marked ? Theme.pressed : "transparent"
                    Accessible.role: Accessible.MenuItem
                    Accessible.name: separator ? "" : modelData.label
                    Accessible.ignored: separator || heading
                    Rectangle {
                        visible: row.separator
                        anchors.centerIn: parent
                        width: parent.width
                        height: 1
                        color: Theme.line
                    }
                    Label {
                        x: 10
                        visible: !row.separator
                        anchors.verticalCenter: parent.verticalCenter
                        anchors.verticalCenterOffset: row.heading ? 2 : 0
                        width: Math.min(implicitWidth, parent.width - ends.width - 28)
                        elide: Text.ElideRight
                        text: row.modelData.label || ""
                        color: row.heading || row.modelData.barred ? Theme.textFaint : Theme.text
                        font.pixelSize: row.heading ? 11 : Theme.normal
                        font.weight: row.heading ? Font.DemiBold : Font.Normal
                    }
                    Row {
                        id: ends
                        anchors.right: parent.right
                        anchors.rightMargin: 10
                        anchors.verticalCenter: parent.verticalCenter
                        spacing: 8
                        Label {
                            anchors.verticalCenter: parent.verticalCenter
                            visible: text !== ""
                            text: row.modelData.key || ""
                            color: Theme.textFaint
                            font.pixelSize: Theme.small
                        }
                        Icon {
                            anchors.verticalCenter: parent.verticalCenter
                            width: 14
                            height: 14
                            visible: !row.heading && !row.separator && (row.modelData.on === true || row.modelData.value === popup.current)
                            name: "check"
                            color: Theme.accent
                        }
                    }
                    MouseArea {
                        anchors.fill: parent
                        enabled: popup.canTake(row.index)
                        hoverEnabled: true
                        onEntered: popup.point(row.index, mapToItem(null, mouseX, mouseY))
                        onPositionChanged: mouse => popup.point(row.index, mapToItem(null, mouse.x, mouse.y))
                        onClicked: popup.take(row.index)
                    }
                }
            }
        }
    }
}
