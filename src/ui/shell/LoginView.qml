// The login stage: a picture, and beside it e-mail and password, or why neither is of use.
import QtQuick
import QtQuick.Window
import Velmora

FocusScope {
    id: form

    required property SessionViewModel session
    readonly property bool ready: session.setupProblem === "" && !session.signingIn
    property bool capsLock: false
    property bool begun: false  // the keyboard has been where it belongs first

    function submit() {
        if (!ready)
            return;
        if (email.text.trim() === "") {
            email.field.forceActiveFocus();
        } else if (password.text === "") {
            password.field.forceActiveFocus();
        } else {
            session.signIn(email.text.trim(), password.text, remember.checked);
        }
    }
    // Nothing tells of the caps lock but the letters that are typed.
    function watchCapsLock(event) {
        const lower = event.text.toLowerCase(), upper = event.text.toUpperCase();
        if (event.key === Qt.Key_CapsLock)
            capsLock = false;
        else if (event.text.length === 1 && lower !== upper)
            capsLock = (event.text === upper) !== Boolean(event.modifiers & Qt.ShiftModifier);
    }
    function takeKeyboard() {
        if (session.setupProblem !== "")
            practice.forceActiveFocus();
        else
            (email.text === "" ? email : password).field.forceActiveFocus();
    }

    Component.onCompleted: email.text = session.lastEmail()
    onActiveFocusChanged: {
        if (activeFocus && !begun) {
            begun = true;
            takeKeyboard();
        }
    }
    Keys.onEscapePressed: event => {
        event.accepted = session.signingIn;
        if (session.signingIn)
            session.cancelSignIn();
    }

    HeroArt {
        objectName: "hero"
        anchors.left: parent.left
        anchors.right: side.left
        height: parent.height
        visible: width > 200
        moving: visible && !Motion.reduced && form.Window.active
        Accessible.ignored: true
    }
    Rectangle {
        id: side
        anchors.right: parent.right
        width: Math.min(parent.width, 424)
        height: parent.height
        color: Theme.surface

        Rectangle {
            width: 1
            height: parent.height
            color: Theme.line
        }
        Flickable {
            anchors.fill: parent
            contentHeight: Math.max(height, content.height + 32)
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds

            Column {
                id: content
                x: 48
                y: Math.max(16, (parent.height - height) / 2)
                width: parent.width - 96
                spacing: 12

                Label {
                    objectName: "title"
                    text: "Velmora"
                    font.pixelSize: Theme.large
                    font.weight: Font.DemiBold
                }
                Label {
                    objectName: "subtitle"
                    width: parent.width
                    bottomPadding: 8
                    wrapMode: Text.Wrap
                    text: form.session.signInHint === "" ? qsTr("Sign in to open your charts") : form.session.signInHint
                    color: Theme.textSoft
                }
                Notice {
                    objectName: "setupNotice"
                    width: parent.width
                    visible: form.session.setupProblem !== ""
                    text: form.session.setupProblem
                }
                TextEntry {
                    id: email
                    objectName: "email"
                    width: parent.width
                    name: qsTr("E-mail")
                    prompt: "you@example.com"
                    enabled: form.ready
                    focus: true
                    inputMethodHints: Qt.ImhEmailCharactersOnly | Qt.ImhNoAutoUppercase
                    KeyNavigation.tab: password.field
                    onAccepted: form.submit()
                }
                TextEntry {
                    id: password
                    objectName: "password"
                    width: parent.width
                    name: qsTr("Password")
                    prompt: qsTr("Password")
                    enabled: form.ready
                    reserved: 30
                    echoMode: reveal.shown ? TextInput.Normal : TextInput.Password
                    inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
                    onAccepted: form.submit()
                    onTyped: event => form.watchCapsLock(event)

                    IconButton {
                        id: reveal
                        objectName: "reveal"
                        property bool shown: false
                        anchors.right: parent.right
                        anchors.rightMargin: 4
                        anchors.bottom: parent.bottom
                        anchors.bottomMargin: 4
                        text: shown ? qsTr("Hide password") : qsTr("Show password")
                        icon24: shown ? "eye-off" : "eye"
                        onClicked: shown = !shown
                    }
                }
                Label {
                    objectName: "capsLock"
                    visible: form.capsLock && password.activeFocus
                    color: Theme.warning
                    font.pixelSize: Theme.small
                    text: qsTr("Caps lock is on")
                    Accessible.role: Accessible.AlertMessage
                    Accessible.name: text
                }
                CheckField {
                    id: remember
                    objectName: "remember"
                    checked: true
                    enabled: form.ready
                    text: qsTr("Remember me")
                    Keys.onReturnPressed: form.submit()
                    Keys.onEnterPressed: form.submit()
                }
                Row {
                    width: parent.width
                    spacing: 8
                    PushButton {
                        objectName: "submit"
                        width: parent.width - (cancel.visible ? cancel.width + parent.spacing : 0)
                        height: 40
                        primary: true
                        enabled: form.ready
                        text: form.session.signingIn ? qsTr("Connecting…") : qsTr("Connect")
                        onClicked: form.submit()
                    }
                    PushButton {
                        id: cancel
                        objectName: "cancel"
                        height: 40
                        visible: form.session.signingIn
                        text: qsTr("Cancel")
                        onClicked: form.session.cancelSignIn()
                    }
                }
                PushButton {
                    id: practice
                    objectName: "practice"
                    width: parent.width
                    height: 40
                    visible: form.session.canPractice
                    enabled: !form.session.signingIn
                    primary: form.session.setupProblem !== ""
                    text: form.session.signInHint === "" ? qsTr("Practice") : qsTr("Leave practice")
                    Accessible.description: qsTr("A market of this machine's own, without an account")
                    onClicked: form.session.startPractice()
                }
                Label {
                    objectName: "error"
                    width: parent.width
                    height: Math.max(42, implicitHeight)
                    visible: form.session.setupProblem === "" || text !== ""
                    text: form.session.authError
                    color: Theme.error
                    wrapMode: Text.Wrap
                    maximumLineCount: 4
                    elide: Text.ElideRight
                    Accessible.role: Accessible.AlertMessage
                    Accessible.name: text
                }
            }
        }
    }
    // Disabled fields lose the keyboard: give it back where the person left off.
    Connections {
        target: form
        function onReadyChanged() {
            if (form.ready)
                form.takeKeyboard();
        }
    }
}
