// A card in the middle of the window that has to be closed before anything else goes on.
import QtQuick
import QtQuick.Templates as T

T.Popup {
    id: sheet

    property string title
    property string acceptText  // of a button beside the one that closes; none where it is empty
    signal accepted
    default property alias content: holder.data

    parent: T.Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    width: 380
    height: Math.min(column.implicitHeight + 2 * padding, parent ? parent.height - 32 : 0)
    padding: 24
    modal: true
    onOpened: forceActiveFocus()  // the menu that it came from gives it away when it has closed
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    T.Overlay.modal: Rectangle {
        color: "#99000000"
    }
    background: Rectangle {
        radius: 10
        color: Theme.surface
        border.width: 1
        border.color: Theme.lineStrong
    }
    contentItem: FocusScope {
        focus: true
        Accessible.role: Accessible.Dialog
        Accessible.name: sheet.title

        Column {
            id: column
            width: parent.width
            spacing: 16
            Label {
                width: parent.width
                wrapMode: Text.Wrap
                font.pixelSize: 15
                font.weight: Font.DemiBold
                text: sheet.title
            }
            Column {
                id: holder
                width: parent.width
                spacing: 8
            }
            Row {
                anchors.right: parent.right
                spacing: 8
                PushButton {
                    objectName: "sheetClose"
                    focus: true
                    text: sheet.acceptText === "" ? qsTr("Close") : qsTr("Cancel")
                    onClicked: sheet.close()
                }
                PushButton {
                    objectName: "sheetAccept"
                    visible: sheet.acceptText !== ""
                    primary: true
                    text: sheet.acceptText
                    onClicked: sheet.accepted()
                }
            }
        }
    }
}
