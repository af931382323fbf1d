// A short text beside what the pointer rests on; its parent is what it is about.
import QtQuick
import QtQuick.Templates as T

T.ToolTip {
    id: tip

    y: -implicitHeight - 10
    x: 0
    margins: 8
    padding: 8
    topPadding: 5
    bottomPadding: 5
    delay: 500
    implicitWidth: Math.min(contentItem.implicitWidth, 280) + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    contentItem: Label {
        text: tip.text
        font.pixelSize: Theme.small
        wrapMode: Text.Wrap
    }
    background: Rectangle {
        radius: 4
        color: Theme.raised
        border.width: 1
        border.color: Theme.lineStrong
    }
}
