// A list that can be typed into. `provider` gives the rows for a typed text, the best first: { label, value } with an
// optional `detail` beside the label, `right` and `key` at the right edge, `on` for what is on, or { label, heading:
// true }. Rows are asked for when it opens and when something is typed, and stay what they are meanwhile.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.Popup {
    id: popup

    property var provider: typed => []
    property string prompt
    property string nothing: qsTr("Nothing fits")
    property real mostHeight: 420
    property var rows: []
    property int marked: -1
    property var pointedAt  // where the pointer was heard of last
    readonly property alias typed: entry.text
    signal chosen(string value)

    function refresh() {
        rows = provider(entry.text);
        marked = rows.findIndex(row => !row.heading);
        view.positionViewAtBeginning();
    }
    function step(by) {
        let at = marked;
        for (let left = Math.abs(by); left > 0; --left) {
            let next = at + Math.sign(by);
            while (next >= 0 && next < rows.length && rows[next].heading)
                next += Math.sign(by);
            if (next < 0 || next >= rows.length)
                break;
            at = next;
        }
        marked = at;
        view.positionViewAtIndex(Math.max(0, at), ListView.Contain);
        if (at > 0 && rows[at - 1].heading)
            view.positionViewAtIndex(at - 1, ListView.Contain);
    }
    function take(index) {
        if (index < 0 || index >= rows.length || rows[index].heading)
            return;
        const value = rows[index].value;
        close();
        chosen(value);
    }
    // A row that comes to lie under a resting pointer is not pointed at.
    function point(index, at) {
        if (pointedAt !== undefined && (pointedAt.x !== at.x || pointedAt.y !== at.y) && !rows[index].heading)
            marked = index;
        pointedAt = at;
    }

    height: Math.min(mostHeight, entry.height + Math.max(36, view.contentHeight) + 2 * padding + 6)
    padding: 6
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    onAboutToShow: {
        pointedAt = undefined;
        entry.text = "";
        refresh();
    }
    onOpened: entry.forceActiveFocus()

    background: Rectangle {
        radius: 8
        color: Theme.raised
        border.width: 1
        border.color: Theme.lineStrong
    }
    contentItem: FocusScope {
        focus: true
        Accessible.role: Accessible.List
        Accessible.name: popup.prompt
        Keys.onPressed: event => {
            const step = { [Qt.Key_Down]: 1, [Qt.Key_Up]: -1, [Qt.Key_PageDown]: 8, [Qt.Key_PageUp]: -8 }[event.key];
            if (step === undefined)
                return;
            popup.step(step);
            event.accepted = true;
        }

        TextEntry {
            id: entry
            objectName: "pickEntry"
            width: parent.width
            name: popup.prompt
            prompt: popup.prompt
            focus: true
            field.height: 32
            onTextChanged: if (popup.visible) popup.refresh()
            onAccepted: popup.take(popup.marked)
        }
        Label {
            anchors.top: entry.bottom
            x: 12
            height: 36
            verticalAlignment: Text.AlignVCenter
            visible: popup.rows.length === 0
            color: Theme.textFaint
            text: popup.nothing
        }
        ListView {
            id: view
            objectName: "pickRows"
            anchors.top: entry.bottom
            anchors.topMargin: 6
            anchors.bottom: parent.bottom
            width: parent.width
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            model: popup.rows
            keyNavigationEnabled: false
            delegate: Rectangle {
                id: row
                required property var modelData
                required property int index
                readonly property bool heading: modelData.heading === true
                objectName: heading ? "" : "row " + modelData.value
                width: view.width
                height: heading ? 24 : 30
                radius: 4
                color: !heading && index === popup.marked ? Theme.pressed : "transparent"
                Accessible.role: Accessible.ListItem
                Accessible.name: modelData.label
                Accessible.ignored: heading

                Label {
                    id: label
                    x: 10
                    anchors.verticalCenter: parent.verticalCenter
                    anchors.verticalCenterOffset: row.heading ? 2 : 0
                    width: Math.min(implicitWidth, parent.width - ends.width - 28)
                    elide: Text.ElideRight
                    text: row.modelData.label
                    color: row.heading ? Theme.textFaint : row.modelData.on ? Theme.accent : Theme.text
                    font.pixelSize: row.heading ? 11 : Theme.normal
                    font.weight: row.heading ? Font.DemiBold : Font.Normal
                }
                Label {
                    anchors.left: label.right
                    anchors.leftMargin: 8
                    anchors.verticalCenter: parent.verticalCenter
                    width: Math.max(0, Math.min(implicitWidth, row.width - label.width - ends.width - 36))
                    elide: Text.ElideRight
                    text: row.modelData.detail || ""
                    color: Theme.textFaint
                    font.pixelSize: Theme.small
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
                        text: row.modelData.right || ""
                        color: Theme.textSoft
                    }
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
                        visible: row.modelData.on === true
                        name: "check"
                        color: Theme.accent
                    }
                }
                MouseArea {
                    anchors.fill: parent
                    enabled: !row.heading
                    hoverEnabled: true
                    onEntered: popup.point(row.index, mapToItem(null, mouseX, mouseY))
                    onPositionChanged: mouse => popup.point(row.index, mapToItem(null, mouse.x, mouse.y))
                    onClicked: popup.take(row.index)
                }
            }
            Rectangle {  // where in a long list one is
                parent: view.parent
                x: parent.width - width + 3
                y: view.y + view.visibleArea.yPosition * view.height
                width: 3
                height: view.visibleArea.heightRatio * view.height
                radius: 1.5
                color: Theme.lineStrong
                visible: view.contentHeight > view.height
            }
        }
    }
}
