// Where a picture of the window goes: to a file of the person's choice, or to the clipboard.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.Popup {
    id: sheet

    required property PictureViewModel picture
    property string problem: ""

    function save() {
        problem = picture.save(entry.text);
    }

    parent: T.Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    width: parent ? Math.min(480, parent.width - 32) : 480
    height: column.implicitHeight + 2 * padding
    padding: 24
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    T.Overlay.modal: Rectangle {
        color: "#99000000"
    }
    onAboutToShow: {
        problem = "";
        entry.text = picture.suggestion;
    }
    onOpened: {
        entry.forceActiveFocus();
        entry.field.selectAll();
    }

    background: Rectangle {
        radius: 10
        color: Theme.surface
        border.width: 1
        border.color: Theme.lineStrong
    }
    contentItem: FocusScope {
        focus: true
        implicitHeight: column.implicitHeight
        Accessible.role: Accessible.Dialog
        Accessible.name: heading.text

        Column {
            id: column
            width: parent.width
            spacing: 16
            Label {
                id: heading
                font.pixelSize: 15
                font.weight: Font.DemiBold
                text: qsTr("Picture of the window")
            }
            TextEntry {
                id: entry
                objectName: "pictureFile"
                width: parent.width
                name: qsTr("File")
                prompt: name
                focus: true
                onAccepted: sheet.save()
            }
            Label {
                objectName: "pictureNote"
                width: parent.width
                wrapMode: Text.Wrap
                color: sheet.problem !== "" ? Theme.error : Theme.textFaint
                font.pixelSize: Theme.small
                text: sheet.problem !== "" ? sheet.problem : qsTr("PNG, %1 pixels, without the crosshair").arg(sheet.picture.size)
            }
            Row {
                anchors.right: parent.right
                spacing: Theme.gap
                PushButton {
                    objectName: "pictureCopy"
                    text: qsTr("Copy")
                    onClicked: sheet.picture.copy()
                }
                PushButton {
                    objectName: "pictureSave"
                    primary: true
                    text: qsTr("Save")
                    onClicked: sheet.save()
                }
            }
        }
    }
}
