// Who is signed in, a way to a new password, and the way out.
import QtQuick
import Velmora

FloatingPanel {
    id: panel

    required property SessionViewModel session
    required property AccountViewModel account

    panelId: "account"
    title: qsTr("Account")
    defaultSize: Qt.size(320, 200)
    minSize: Qt.size(260, 120)
    autoFit: true
    onOpenChanged: if (open) account.startOver()

    body: Component {
        FocusScope {
            implicitHeight: column.implicitHeight + 32

            Column {
                id: column
                x: 16
                y: 16
                width: parent.width - 32
                spacing: 12

                Row {
                    width: parent.width
                    spacing: 12
                    Label {
                        id: caption
                        text: qsTr("Email")
                        color: Theme.textSoft
                    }
                    Label {
                        objectName: "accountEmail"
                        width: parent.width - caption.width - parent.spacing
                        horizontalAlignment: Text.AlignRight
                        elide: Text.ElideMiddle
                        text: panel.session.userEmail
                    }
                }
                PushButton {
                    objectName: "resetPassword"
                    width: parent.width
                    enabled: panel.session.userEmail !== ""  // while one is under way it does nothing, and keeps the keyboard
                    text: panel.account.resetting ? qsTr("Sending…") : qsTr("Reset Password")
                    onClicked: panel.account.resetPassword()
                }
                Label {
                    objectName: "resetResult"
                    width: parent.width
                    visible: text !== ""
                    wrapMode: Text.Wrap
                    color: panel.account.resetSent ? Theme.accent : Theme.error
                    text: panel.account.resetSent ? qsTr("Reset email sent ✓")
                                                  : panel.account.resetError !== "" ? qsTr("Reset failed: %1").arg(panel.account.resetError)
                                                                                    : ""
                    Accessible.role: Accessible.AlertMessage
                    Accessible.name: text
                }
                PushButton {
                    objectName: "logout"
                    width: parent.width
                    text: qsTr("Logout")
                    onClicked: panel.session.signOutAndClose()
                }
            }
        }
    }
}
