// What is done at once, by a button. What cannot be undone is asked once.
import QtQuick
import Velmora

FocusScope {
    id: deed

    required property string action
    required property string title
    readonly property bool grave: deed.action === "reset" || deed.action === "resetAccount"
    readonly property string question: deed.action === "reset" ? qsTr("All defaults?") : qsTr("Start anew?")
    property bool asking: false
    readonly property bool takesEscape: asking
    signal carriedOut
    signal entered

    function press() {
        if (!grave)
            return carriedOut();
        asking = true;
        stay.forceActiveFocus(Qt.TabFocusReason);
    }
    function answer(yes) {
        asking = false;
        if (yes)
            carriedOut();
        button.forceActiveFocus(Qt.TabFocusReason);
    }

    objectName: "action " + deed.action
    implicitHeight: 32
    Keys.onEscapePressed: event => {
        event.accepted = asking;
        if (asking)
            answer(false);
    }

    PushButton {
        id: button
        objectName: "press"
        y: 4
        width: parent.width
        implicitHeight: 28
        visible: !deed.asking
        focus: true
        font.pixelSize: Theme.small
        text: deed.title
        onClicked: deed.press()
        onActiveFocusChanged: if (activeFocus) deed.entered()
        Icon {
            x: 10
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            name: ({ templatesPanelOpen: "bookmark", reset: "rotate-ccw", resetAccount: "rotate-ccw", logout: "log-out",
                     export: "upload", import: "download" })[deed.action]
        }
    }
    Row {
        y: 4
        width: parent.width
        height: 28
        visible: deed.asking
        spacing: 8
        Label {
            width: parent.width - stay.width - yes.width - 16
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            font.pixelSize: Theme.small
            text: deed.question
        }
        PushButton {
            id: stay
            objectName: "stay"
            implicitWidth: 52
            implicitHeight: 28
            leftPadding: 8
            rightPadding: 8
            font.pixelSize: Theme.small
            text: qsTr("Keep")
            onClicked: deed.answer(false)
        }
        PushButton {
            id: yes
            objectName: "yes"
            implicitWidth: 52
            implicitHeight: 28
            leftPadding: 8
            rightPadding: 8
            primary: true
            font.pixelSize: Theme.small
            text: qsTr("Reset")
            onClicked: deed.answer(true)
        }
    }
}
