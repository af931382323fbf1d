// The window: the login form until somebody is signed in, then the pane.
import QtQuick
import QtQuick.Window
import Velmora

Window {
    id: window

    required property PaneViewModel pane
    required property ServiceViewModel service

    title: "Velmora"
    color: Theme.background
    minimumWidth: pane.session.entered ? 720 : 1000
    minimumHeight: pane.session.entered ? 480 : 580

    Loader {
        objectName: "stage"
        anchors.fill: parent
        focus: true
        sourceComponent: window.pane.session.entered ? entered : login
        onLoaded: item.forceActiveFocus()
    }
    Component {
        id: login
        SignInForm {
            objectName: "signInForm"
            session: window.pane.session
        }
    }
    Component {
        id: entered
        ChartPane {
            objectName: "chartPane"
            pane: window.pane
            service: window.service
        }
    }
}
