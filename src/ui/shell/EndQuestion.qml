// What the person should know before the program ends: Enter ends it, Escape does not.
import QtQuick
import Velmora

FocusScope {
    id: question

    required property WindowViewModel view

    Component.onCompleted: endButton.forceActiveFocus()
    Keys.onEscapePressed: view.stay()
    Keys.onReturnPressed: view.end()
    Keys.onEnterPressed: view.end()

    Rectangle {
        anchors.fill: parent
        color: "#a0000000"
        MouseArea {  // nothing below is pressed meanwhile
            anchors.fill: parent
            hoverEnabled: true
            acceptedButtons: Qt.AllButtons
            onWheel: wheel => wheel.accepted = true
        }
    }
    Rectangle {
        anchors.centerIn: parent
        width: Math.min(440, parent.width - 48)
        height: lines.implicitHeight + 48
        radius: 8
        color: Theme.raised
        border.width: 1
        border.color: Theme.lineStrong
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text.text

        Column {
            id: lines
            anchors.centerIn: parent
            width: parent.width - 48
            spacing: 16
            Label {
                id: text
                width: parent.width
                wrapMode: Text.Wrap
                text: question.view.endNotice
            }
            Row {
                anchors.right: parent.right
                spacing: 8
                PushButton {
                    id: stayButton
                    objectName: "stay"
                    KeyNavigation.tab: endButton
                    KeyNavigation.backtab: endButton
                    text: qsTr("Keep open")
                    onClicked: question.view.stay()
                }
                PushButton {
                    id: endButton
                    objectName: "end"
                    primary: true
                    KeyNavigation.tab: stayButton
                    KeyNavigation.backtab: stayButton
                    text: qsTr("End Velmora")
                    onClicked: question.view.end()
                }
            }
        }
    }
}
