// The login stage: e-mail and password, or why neither is of use.
import QtQuick
import Velmora

FocusScope {
    id: form

    required property SessionViewModel session
    readonly property bool ready: session.setupProblem === "" && !session.signingIn

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

    Rectangle {
        id: card
        objectName: "card"
        anchors.centerIn: parent
        width: 376
        height: content.height + 56
        radius: 10
        color: Theme.surface
        border.width: 1
        border.color: Theme.line

        Column {
            id: content
            x: 32
            y: 28
            width: parent.width - 64
            spacing: 13

            Column {
                width: parent.width
                spacing: 2
                Label {
                    objectName: "title"
                    text: "Velmora"
                    font.pixelSize: Theme.large
                    font.weight: Font.DemiBold
                }
                Label {
                    objectName: "subtitle"
                    width: parent.width
                    wrapMode: Text.Wrap
                    text: form.session.signInHint === "" ? qsTr("Sign in to open your charts") : form.session.signInHint
                    color: Theme.textSoft
                }
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
                caption: qsTr("E-mail")
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
                caption: qsTr("Password")
                enabled: form.ready
                reserved: 30
                echoMode: reveal.shown ? TextInput.Normal : TextInput.Password
                inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
                onAccepted: form.submit()

                IconButton {
                    id: reveal
                    objectName: "reveal"
                    property bool shown: false
                    anchors.right: parent.right
                    anchors.rightMargin: 4
                    anchors.bottom: parent.bottom
                    anchors.bottomMargin: 4
                    focusPolicy: Qt.NoFocus
                    text: shown ? qsTr("Hide password") : qsTr("Show password")
                    icon24: shown ? "eye-off" : "eye"
                    onClicked: shown = !shown
                }
            }
            CheckField {
                id: remember
                objectName: "remember"
                checked: true
                enabled: form.ready
                text: qsTr("Remember me")
            }
            PushButton {
                id: submitButton
                objectName: "submit"
                width: parent.width
                height: 40
                primary: true
                enabled: form.ready
                text: form.session.signingIn ? qsTr("Connecting…") : qsTr("Sign in")
                onClicked: form.submit()
                Keys.onReturnPressed: form.submit()
                Keys.onEnterPressed: form.submit()
            }
            Label {
                objectName: "error"
                width: parent.width
                height: Math.max(42, implicitHeight)
                visible: form.session.setupProblem === ""
                text: form.session.authError
                color: Theme.error
                wrapMode: Text.Wrap
                maximumLineCount: 4
                elide: Text.ElideRight
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }
        }
    }
    // Disabled fields lose the keyboard: give it back where the person left off.
    Connections {
        target: form
        function onReadyChanged() {
            if (form.ready)
                (email.text === "" ? email : password).field.forceActiveFocus();
        }
    }
}
