// A number between two buttons.
import QtQuick
import Velmora

SteppedControl {
    id: stepper

    component StepButton: Rectangle {
        id: button
        property alias icon: sign.name
        property int by: 1

        width: 24
        height: 24
        radius: 4
        color: area.pressed ? Theme.pressed : area.containsMouse ? Theme.hover : "transparent"
        Icon {
            id: sign
            anchors.centerIn: parent
            width: 12
            height: 12
        }
        MouseArea {
            id: area
            anchors.fill: parent
            hoverEnabled: true
            onPressed: mouse => {
                stepper.take();
                stepper.settings.beginGesture();
                stepper.settings.step(stepper.part.name, mouse.modifiers & Qt.ShiftModifier ? 10 * button.by : button.by);
            }
            onReleased: stepper.settings.endGesture()
            onCanceled: stepper.settings.endGesture()
        }
        Timer {
            interval: running && held ? 60 : 400
            property bool held: false
            running: area.pressed
            repeat: true
            onRunningChanged: held = false
            onTriggered: {
                held = true;
                stepper.settings.step(stepper.part.name, button.by);
            }
        }
    }

    implicitWidth: 92
    field: number
    Accessible.role: Accessible.SpinBox

    Rectangle {
        anchors.fill: parent
        anchors.margins: -2
        visible: stepper.marked
        radius: 6
        color: "transparent"
        border.width: 2
        border.color: Theme.focus
    }
    StepButton {
        objectName: "less"
        by: -1
        icon: "minus"
    }
    ValueField {
        id: number
        anchors.horizontalCenter: parent.horizontalCenter
        width: 44
        horizontalAlignment: TextInput.AlignHCenter
        activeFocusOnTab: false
        settings: stepper.settings
        part: stepper.part
        onEnded: stepper.forceActiveFocus(Qt.TabFocusReason)
    }
    StepButton {
        objectName: "more"
        anchors.right: parent.right
        icon: "plus"
    }
}
