// All trades, or all fills: sorted by a column, those of one root or of one day, and as a file to take along.
import QtQuick
import QtQuick.Templates as T
import Velmora

FloatingPanel {
    id: panel

    required property SimListViewModel list
    signal handedBack  // closed by a person who had the keyboard in it

    panelId: "simList"
    title: list.title
    defaultSize: Qt.size(720, 360)
    minSize: Qt.size(320, 220)
    open: list.kind !== ""
    onClose: {
        const had = activeFocus;
        list.kind = "";
        if (had)
            handedBack();
    }
    onOpenChanged: if (!open) sheet.close()
    Keys.onEscapePressed: close()

    body: Component {
        FocusScope {
            id: content

            Row {
                id: head
                x: 10
                y: 8
                height: 32
                spacing: 4
                SairaMenu {
                    objectName: "listRoot"
                    focus: true
                    options: [{ label: qsTr("All roots"), value: "" }].concat(panel.list.roots.map(root => ({ label: root, value: root })))
                    selection: panel.list.root
                    placeholder: panel.list.root
                    font.pixelSize: Theme.normal
                    Accessible.name: qsTr("Root: %1").arg(text)
                    tip: qsTr("Root")
                    onChosen: value => panel.list.root = value
                }
                SairaMenu {
                    objectName: "listDay"
                    options: [{ label: qsTr("All days"), value: "" }].concat(panel.list.days.map(day => ({ label: day.name, value: day.day })))
                    selection: panel.list.day
                    placeholder: qsTr("Another day")
                    font.pixelSize: Theme.normal
                    Accessible.name: qsTr("Day: %1").arg(text)
                    tip: qsTr("Day")
                    onChosen: value => panel.list.day = value
                }
            }
            SmallButton {
                objectName: "listExport"
                anchors.right: parent.right
                anchors.rightMargin: 10
                y: 10
                text: qsTr("Export CSV…")
                barred: panel.list.rows.count === 0 ? qsTr("There is nothing to export") : ""
                onPressedOnce: sheet.open()
            }
            Flickable {
                id: across
                anchors.top: head.bottom
                anchors.topMargin: 6
                anchors.bottom: parent.bottom
                anchors.bottomMargin: 8
                x: 10
                width: parent.width - 20
                clip: true
                contentWidth: Math.max(width, (panel.list.columns.length + 0.7) * 70)
                contentHeight: height
                boundsBehavior: Flickable.StopAtBounds
                flickableDirection: Flickable.HorizontalFlick

                readonly property real cell: contentWidth / (panel.list.columns.length + 0.7)  // the first, a time, is wider

                Row {
                    id: names
                    Repeater {
                        model: panel.list.columns
                        delegate: T.Button {
                            id: name
                            required property var modelData
                            required property int index
                            readonly property bool sorts: panel.list.sortedBy === index
                            objectName: "column " + modelData.id
                            width: index === 0 ? 1.7 * across.cell : across.cell
                            height: 28
                            hoverEnabled: true
                            focusPolicy: Qt.TabFocus
                            Accessible.name: sorts ? (panel.list.descending ? qsTr("%1, sorted downwards") : qsTr("%1, sorted upwards")).arg(modelData.title) : modelData.title
                            Keys.onReturnPressed: event => { if (!event.isAutoRepeat) clicked(); }
                            Keys.onEnterPressed: event => { if (!event.isAutoRepeat) clicked(); }
                            Keys.onPressed: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }  // held, it is one press
                            Keys.onReleased: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }
                            onClicked: panel.list.sortBy(index)
                            onActiveFocusChanged: {
                                if (!activeFocus || focusReason === Qt.MouseFocusReason)
                                    return;
                                across.contentX = Math.max(0, Math.min(x, Math.max(across.contentX, x + width - across.width)));
                            }
                            contentItem: Label {
                                text: name.modelData.title + (name.sorts ? (panel.list.descending ? " ↓" : " ↑") : "")
                                horizontalAlignment: name.modelData.number ? Text.AlignRight : Text.AlignLeft
                                verticalAlignment: Text.AlignVCenter
                                leftPadding: 4
                                rightPadding: 4
                                elide: Text.ElideRight
                                font.pixelSize: 11
                                font.weight: Font.DemiBold
                                color: name.sorts || name.hovered ? Theme.text : Theme.textSoft
                            }
                            background: Rectangle {
                                radius: 4
                                color: name.hovered ? Theme.hover : "transparent"
                                border.width: name.visualFocus ? 2 : 0
                                border.color: Theme.focus
                            }
                        }
                    }
                }
                ListView {
                    id: rows
                    objectName: "listRows"
                    anchors.top: names.bottom
                    width: across.contentWidth
                    height: across.height - names.height
                    clip: true
                    boundsBehavior: Flickable.StopAtBounds
                    activeFocusOnTab: true
                    keyNavigationEnabled: true
                    model: panel.list.rows
                    Accessible.role: Accessible.List
                    Accessible.name: panel.title
                    Keys.onPressed: event => {
                        const by = { [Qt.Key_PageDown]: 10, [Qt.Key_PageUp]: -10, [Qt.Key_Home]: -count, [Qt.Key_End]: count }[event.key];
                        if (by === undefined)
                            return;
                        currentIndex = Math.max(0, Math.min(count - 1, currentIndex + by));
                        event.accepted = true;
                    }
                    delegate: Rectangle {
                        id: one
                        required property var row
                        required property int index
                        objectName: "listRow " + index
                        width: rows.width
                        height: 26
                        radius: 4
                        color: rows.activeFocus && ListView.isCurrentItem ? Theme.pressed : over.hovered ? Theme.hover : "transparent"
                        Accessible.role: Accessible.ListItem
                        Accessible.name: row.cells.join(" ")
                        HoverHandler {
                            id: over
                        }
                        Row {
                            Repeater {
                                model: one.row.cells
                                delegate: Label {
                                    required property string modelData
                                    required property int index
                                    readonly property var column: panel.list.columns[index] || {}
                                    width: index === 0 ? 1.7 * across.cell : across.cell
                                    height: 26
                                    leftPadding: 4
                                    rightPadding: 4
                                    verticalAlignment: Text.AlignVCenter
                                    horizontalAlignment: column.number ? Text.AlignRight : Text.AlignLeft
                                    elide: Text.ElideRight
                                    font.pixelSize: Theme.small
                                    color: column.result ? (one.row.gain ? Theme.gain : Theme.loss) : Theme.text
                                    text: modelData
                                }
                            }
                        }
                    }
                    T.ScrollBar.vertical: T.ScrollBar {
                        id: bar
                        implicitWidth: 8
                        padding: 2
                        minimumSize: 0.1
                        visible: size < 1
                        contentItem: Rectangle {
                            implicitWidth: 4
                            radius: 2
                            color: bar.pressed ? Theme.textFaint : Theme.lineStrong
                        }
                    }
                    Label {
                        anchors.centerIn: parent
                        visible: rows.count === 0
                        color: Theme.textFaint
                        text: qsTr("none")
                    }
                }
            }
        }
    }

    FileSheet {
        id: sheet
        objectName: "listFile"
        saving: true
        title: qsTr("Export %1").arg(panel.list.title.toLowerCase())
        suffix: ".csv"
        proposal: panel.list.fileName
        onChosen: path => {
            const problem = panel.list.exportTo(path);
            if (problem !== "")
                fail(problem);
            else
                close();
        }
    }
}
