// Starts the account anew, after a question.
import QtQuick
import Velmora

FocusScope {
    id: deed

    required property SimViewModel sim
    property bool asking: false

    function answer(yes) {
        asking = false;
        if (yes)
            sim.reset();
        button.forceActiveFocus(Qt.TabFocusReason);
    }

    implicitHeight: asking ? question.height : button.height
    Keys.onEscapePressed: event => {
        event.accepted = asking;
        if (asking)
            answer(false);
    }

    SmallButton {
        id: button
        objectName: "simReset"
        visible: !deed.asking
        width: parent.width
        focus: true
        text: qsTr("Reset account…")
        barred: deed.sim.barred
        onPressedOnce: {
            deed.asking = true;
            stay.forceActiveFocus(Qt.TabFocusReason);
        }
    }
    Column {
        id: question
        visible: deed.asking
        width: parent.width
        spacing: 8
        Label {
            objectName: "simResetText"
            width: parent.width
            wrapMode: Text.Wrap
            font.pixelSize: Theme.small
            color: Theme.warning
            text: deed.asking ? deed.sim.resetQuestion() : ""
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        Row {
            anchors.right: parent.right
            spacing: 8
            SmallButton {
                id: stay
                objectName: "simKeep"
                text: qsTr("Keep")
                onPressedOnce: deed.answer(false)
            }
            SmallButton {
                objectName: "simResetYes"
                text: qsTr("Reset")
                barred: deed.sim.barred
                onPressedOnce: deed.answer(true)
            }
        }
    }
}
