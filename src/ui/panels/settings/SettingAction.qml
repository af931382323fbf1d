// What is done at once, by a button. What cannot be undone is asked once.
import QtQuick
import Velmora

FocusScope {
    id: deed

    required property SettingsViewModel settings
    required property string action
    required property string title
    readonly property bool grave: deed.action === "reset" || deed.action === "resetAccount"
    property string question
    property bool asking: false
    readonly property bool takesEscape: asking
    signal carriedOut
    signal entered

    function press() {
        if (!grave)
            return carriedOut();
        question = deed.action === "reset" ? qsTr("All defaults?") : settings.accountQuestion();
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
    implicitHeight: deed.asking ? asked.height + 4 : 32
    onHeightChanged: if (asking) entered()  // the question lies in view
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
    Flow {  // the buttons beside a short question, below a long one
        id: asked
        readonly property real buttons: stay.width + yes.width + spacing
        y: 4
        width: parent.width
        visible: deed.asking
        spacing: 8
        Label {
            objectName: "question"
            readonly property bool beside: implicitWidth + asked.buttons + asked.spacing <= asked.width
            width: beside ? asked.width - asked.buttons - asked.spacing : asked.width
            height: beside ? 28 : implicitHeight
            verticalAlignment: Text.AlignVCenter
            wrapMode: Text.Wrap
            font.pixelSize: Theme.small
            color: deed.action === "resetAccount" ? Theme.warning : Theme.text
            text: deed.question
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
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
