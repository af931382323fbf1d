// Every action with its key, which can be changed here, and the keys that are the same everywhere.
import QtQuick
import QtQuick.Templates as T
import Velmora

FocusScope {
    id: page

    property ActionsViewModel actions: null
    property string waiting: ""  // the action that the next key is for
    property string pressed: ""  // the key that it may get, which is another's
    property string problem: ""
    readonly property string holder: waiting !== "" && pressed !== "" && actions ? actions.holder(pressed, waiting) : ""

    function ask(id) {
        waiting = id;
        pressed = problem = "";
        capture.forceActiveFocus();
    }
    function leave() {
        const chip = itemOf(waiting);
        waiting = pressed = problem = "";
        (chip || entry).forceActiveFocus();
    }
    function itemOf(id) {
        const at = (list.model || []).findIndex(row => row.id === id);
        list.forceLayout();
        const row = at < 0 ? null : list.itemAtIndex(at);
        return row ? row.chip : null;
    }
    function give(chord) {
        const id = waiting;
        problem = actions.assign(id, chord);
        pressed = "";
        if (problem !== "")
            return;
        waiting = "";
        (itemOf(id) || entry).forceActiveFocus();
    }
    function take(event) {
        if (event.key === Qt.Key_Escape)
            return leave();
        if (pressed !== "" && (event.key === Qt.Key_Return || event.key === Qt.Key_Enter))
            return give(pressed);
        if (event.key === Qt.Key_Backspace || event.key === Qt.Key_Delete)
            return give("");
        const chord = actions.chord(event.key, event.text, event.modifiers);
        if (chord === "")
            return;  // a modifier alone
        problem = "";
        pressed = chord;
        if (actions.holder(chord, waiting) === "")
            give(chord);
    }
    // the rows are made anew by it
    function resetOne(id) {
        actions.reset(id);
        (itemOf(id) || entry).forceActiveFocus();
    }
    function start() {
        entry.forceActiveFocus();
    }
    function rowsNow() {
        return actions ? actions.keyRows(entry.text) : [];
    }

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Keys")
    Component.onCompleted: list.model = rowsNow()
    Connections {
        target: page.actions
        function onKeysChanged() {
            const at = list.contentY;
            list.model = page.rowsNow();
            list.contentY = at;
        }
    }

    Item {  // has the keyboard while a key is waited for
        id: capture
        Keys.onPressed: event => {
            page.take(event);
            event.accepted = true;
        }
        onActiveFocusChanged: {
            if (!activeFocus)
                page.waiting = page.pressed = "";
        }
    }
    TextEntry {
        id: entry
        objectName: "keysEntry"
        anchors.top: parent.top
        width: parent.width
        name: qsTr("Find an action or a key")
        prompt: name
        focus: true
        onTextChanged: list.model = page.rowsNow()
        Keys.onPressed: event => {
            // at an end of what is typed they do not go on to another page, which would throw it away
            if (text !== "" && (event.key === Qt.Key_Left || event.key === Qt.Key_Right)) {
                event.accepted = true;
                return;
            }
            const by = { [Qt.Key_Down]: 60, [Qt.Key_Up]: -60, [Qt.Key_PageDown]: list.height - 30, [Qt.Key_PageUp]: 30 - list.height }[event.key];
            if (by === undefined)
                return;
            list.contentY = Math.max(0, Math.min(list.contentHeight - list.height, list.contentY + by));
            event.accepted = true;
        }
    }
    ListView {
        id: list
        objectName: "keyRows"
        anchors.top: entry.bottom
        anchors.topMargin: 8
        anchors.bottom: footer.top
        anchors.bottomMargin: 8
        width: parent.width
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        keyNavigationEnabled: false
        delegate: Item {
            id: row
            required property var modelData
            required property int index
            readonly property bool heading: modelData.heading === true
            readonly property alias chip: chip
            readonly property bool waits: !heading && modelData.id !== undefined && page.waiting === modelData.id
            width: list.width - 8
            height: heading ? 30 : 32

            Label {
                anchors.verticalCenter: parent.verticalCenter
                anchors.verticalCenterOffset: row.heading ? 4 : 0
                width: parent.width - chip.width - back.width - 24
                elide: Text.ElideRight
                text: row.modelData.label
                color: row.heading ? Theme.textFaint : Theme.text
                font.pixelSize: row.heading ? 11 : Theme.normal
                font.weight: row.heading ? Font.DemiBold : Font.Normal
            }
            IconButton {
                id: back
                objectName: "reset " + row.modelData.id
                anchors.right: chip.left
                anchors.rightMargin: 4
                anchors.verticalCenter: parent.verticalCenter
                implicitWidth: 26
                implicitHeight: 26
                visible: row.modelData.changed === true && !row.waits
                text: qsTr("Back to the first key of %1").arg(row.modelData.label)
                hint: qsTr("Back to its first key")
                icon24: "rotate-ccw"
                onClicked: page.resetOne(row.modelData.id)
            }
            T.Button {
                id: chip
                objectName: row.modelData.id === undefined ? "" : "key " + row.modelData.id
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                visible: !row.heading
                enabled: row.modelData.fixed !== true
                width: Math.max(72, caption.implicitWidth + 20)
                height: 26
                hoverEnabled: true
                focusPolicy: Qt.TabFocus
                Accessible.name: qsTr("Key of %1: %2").arg(row.modelData.label).arg(row.modelData.key || qsTr("none"))
                Keys.onReturnPressed: event => { if (!event.isAutoRepeat) clicked(); }
                Keys.onEnterPressed: event => { if (!event.isAutoRepeat) clicked(); }
                onClicked: page.ask(row.modelData.id)
                onActiveFocusChanged: if (activeFocus) list.positionViewAtIndex(row.index, ListView.Contain)
                contentItem: Label {
                    id: caption
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    font.pixelSize: Theme.small
                    color: row.waits ? Theme.accent : !chip.enabled ? Theme.textFaint : row.modelData.key ? Theme.text : Theme.textFaint
                    text: row.waits ? page.pressed !== "" ? page.actions.chordLabel(page.pressed) : qsTr("Press a key")
                                    : row.modelData.key || qsTr("none")
                }
                background: Rectangle {
                    radius: 4
                    color: !chip.enabled ? "transparent" : chip.hovered || row.waits ? Theme.hover : Theme.raised
                    border.width: chip.visualFocus ? 2 : chip.enabled ? 1 : 0
                    border.color: row.waits ? Theme.accent : chip.visualFocus ? Theme.focus : Theme.line
                }
            }
        }
        Rectangle {
            parent: list.parent
            x: list.width - 3
            y: list.y + list.visibleArea.yPosition * list.height
            width: 3
            height: list.visibleArea.heightRatio * list.height
            radius: 1.5
            color: Theme.lineStrong
            visible: list.contentHeight > list.height
        }
    }
    Item {
        id: footer
        anchors.bottom: parent.bottom
        width: parent.width
        height: 36

        Label {
            objectName: "keysNote"
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width - resetAll.width - 16
            wrapMode: Text.Wrap
            maximumLineCount: 2
            elide: Text.ElideRight
            font.pixelSize: Theme.small
            color: page.problem !== "" ? Theme.error : page.holder !== "" ? Theme.warning : Theme.textFaint
            text: page.problem !== "" ? page.problem
                  : page.holder !== "" ? qsTr("%1 is the key of “%2”. Enter takes it, Escape leaves it.").arg(page.actions.chordLabel(page.pressed)).arg(page.holder)
                  : page.waiting !== "" ? qsTr("Backspace for no key, Escape to leave it.")
                  : list.count === 0 ? qsTr("Nothing fits") : qsTr("Press a key's button to change it.")
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        PushButton {
            id: resetAll
            objectName: "keysReset"
            anchors.right: parent.right
            enabled: page.actions !== null && !page.actions.keysAreDefaults
            text: qsTr("Reset all")
            onClicked: {
                page.actions.resetAll();
                entry.forceActiveFocus();
            }
        }
    }
}
