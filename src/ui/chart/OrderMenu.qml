// The menu of a right click on the chart. `rows` holds { text, note, separator }; a note is only to be read.
import QtQuick
import QtQuick.Templates as T

T.Popup {
    id: menu

    property var rows: []
    property int marked: -1
    property point at
    signal chosen(int index)

    function canTake(index) {
        return !rows[index].separator && !rows[index].note;
    }
    function openAt(px, py) {
        marked = -1;
        at = Qt.point(px, py);
        open();
    }
    function step(by) {
        for (let i = marked + by; i >= 0 && i < rows.length; i += by) {
            if (canTake(i)) {
                marked = i;
                return;
            }
        }
    }
    function take(index) {
        close();
        if (index >= 0 && canTake(index))
            chosen(index);
    }

    x: Math.max(0, Math.min(at.x, parent.width - width - 4))
    y: Math.max(0, Math.min(at.y, parent.height - height - 4))
    width: 220
    height: column.implicitHeight + 2 * padding
    padding: 6
    focus: true
    modal: true  // the press that closes it is not for the chart
    dim: false
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    background: Rectangle {
        radius: 8
        color: Theme.raised
        border.width: 1
        border.color: Theme.lineStrong
    }
    contentItem: FocusScope {
        focus: true
        Keys.onDownPressed: menu.step(1)
        Keys.onUpPressed: menu.step(-1)
        Keys.onReturnPressed: menu.take(menu.marked)
        Keys.onEnterPressed: menu.take(menu.marked)

        Column {
            id: column
            width: parent.width
            Repeater {
                model: menu.rows
                delegate: Rectangle {
                    id: row
                    required property var modelData
                    required property int index
                    objectName: "orderRow" + index
                    width: column.width
                    height: modelData.separator ? 9 : 28
                    radius: 4
                    color: !modelData.separator && index === menu.marked ? Theme.pressed : "transparent"
                    Rectangle {
                        visible: row.modelData.separator
                        anchors.centerIn: parent
                        width: parent.width
                        height: 1
                        color: Theme.line
                    }
                    Label {
                        x: 10
                        visible: !row.modelData.separator
                        anchors.verticalCenter: parent.verticalCenter
                        color: row.modelData.note ? Theme.warning : Theme.text
                        text: row.modelData.text
                    }
                    MouseArea {
                        anchors.fill: parent
                        enabled: menu.canTake(row.index)
                        hoverEnabled: true
                        onEntered: menu.marked = row.index
                        onClicked: menu.take(row.index)
                    }
                }
            }
        }
    }
}
