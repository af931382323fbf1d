// Where a picture of the window goes: to a file of the person's choice, or to the clipboard.
import QtQuick
import Velmora

FileSheet {
    id: sheet

    required property PictureViewModel picture

    title: qsTr("Picture of the window")
    saving: true
    suffix: ".png"
    proposal: picture.proposal
    onChosen: path => {
        const problem = picture.save(path);
        if (problem !== "")
            fail(problem);
    }

    Item {
        width: parent.width
        height: copy.height

        Label {
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width - copy.width - 16
            elide: Text.ElideRight
            color: Theme.textFaint
            font.pixelSize: Theme.small
            text: qsTr("%1 pixels, without the crosshair").arg(sheet.picture.size)
        }
        PushButton {
            id: copy
            objectName: "pictureCopy"
            anchors.right: parent.right
            text: qsTr("Copy to clipboard")
            onClicked: sheet.picture.copy()
        }
    }
}
