// The key to the chart: its marks by name, every key, and every gesture.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.Popup {
    id: sheet

    required property ShellViewModel shell
    required property PaneViewModel pane
    property ActionsViewModel actions: null
    readonly property string waiting: page.item && page.item.waiting ? page.item.waiting : ""  // a key is asked for
    readonly property var tabs: [qsTr("Marks"), qsTr("Keys"), qsTr("Gestures")]

    function showTab(tab) {
        shell.keyTab = tab;
        const button = tabRow.children[tab];
        if (button)
            button.forceActiveFocus(Qt.TabFocusReason);
    }

    parent: T.Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    width: parent ? Math.min(560, parent.width - 32) : 560
    height: parent ? Math.min(640, parent.height - 32) : 640
    padding: 16
    modal: true
    focus: true
    closePolicy: waiting === "" ? T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside : T.Popup.CloseOnPressOutside
    T.Overlay.modal: Rectangle {
        color: "#99000000"
    }
    onOpened: page.item.start()

    background: Rectangle {
        radius: 10
        color: Theme.surface
        border.width: 1
        border.color: Theme.lineStrong
    }
    contentItem: FocusScope {
        focus: true
        Keys.onRightPressed: sheet.showTab((sheet.shell.keyTab + 1) % sheet.tabs.length)
        Keys.onLeftPressed: sheet.showTab((sheet.shell.keyTab + sheet.tabs.length - 1) % sheet.tabs.length)
        Accessible.role: Accessible.Dialog
        Accessible.name: heading.text

        Label {
            id: heading
            height: 30
            verticalAlignment: Text.AlignVCenter
            font.pixelSize: 15
            font.weight: Font.DemiBold
            text: qsTr("Key to the chart")
        }
        Row {
            id: tabRow
            x: heading.implicitWidth + 24
            spacing: 4
            Accessible.role: Accessible.PageTabList

            Repeater {
                model: sheet.tabs
                T.TabButton {
                    id: tab
                    required property string modelData
                    required property int index
                    objectName: "keyTab" + index
                    checkable: true
                    autoExclusive: true
                    checked: sheet.shell.keyTab === index
                    text: modelData
                    implicitWidth: caption.implicitWidth + 20
                    implicitHeight: 30
                    hoverEnabled: true
                    focusPolicy: checked ? Qt.StrongFocus : Qt.ClickFocus  // the arrows lead to the others
                    Keys.onDownPressed: page.item.start()
                    Keys.onReturnPressed: page.item.start()
                    Keys.onEnterPressed: page.item.start()
                    onClicked: sheet.shell.keyTab = index
                    contentItem: Label {
                        id: caption
                        text: tab.text
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        color: tab.checked ? Theme.accent : tab.hovered ? Theme.text : Theme.textSoft
                    }
                    background: Rectangle {
                        radius: Theme.radius
                        color: tab.checked ? Theme.raised : tab.hovered ? Theme.hover : "transparent"
                        border.width: tab.visualFocus ? 2 : 0
                        border.color: Theme.focus
                    }
                }
            }
        }
        IconButton {
            objectName: "keysClose"
            anchors.right: parent.right
            text: qsTr("Close")
            icon24: "x"
            onClicked: sheet.close()
        }
        Loader {
            id: page
            objectName: "keyPage"
            anchors.top: heading.bottom
            anchors.topMargin: 8
            anchors.bottom: parent.bottom
            width: parent.width
            focus: true
            active: sheet.visible
            sourceComponent: [marks, keys, gestures][sheet.shell.keyTab]
        }
        Component {
            id: marks
            MarkPage {
                pane: sheet.pane
            }
        }
        Component {
            id: keys
            KeyPage {
                actions: sheet.actions
            }
        }
        Component {
            id: gestures
            GesturePage {
                actions: sheet.actions
            }
        }
    }
}
