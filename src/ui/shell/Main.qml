// One window: the login form until somebody is signed in, then one pane or two.
import QtQuick
import QtQuick.Window
import Velmora

Window {
    id: window

    required property WindowViewModel view
    required property ServiceViewModel service
    readonly property bool entered: view.pane.session.entered

    title: "Velmora"
    color: Theme.background
    minimumWidth: entered ? 720 : 1000
    minimumHeight: entered ? 480 : 580
    // the shell closes it, and knows what has to be said or saved first
    onClosing: close => {
        close.accepted = false;
        view.closeWindow();
    }

    Loader {
        objectName: "stage"
        anchors.fill: parent
        focus: true
        sourceComponent: window.entered ? panes : login
        onLoaded: item.forceActiveFocus()
    }
    Component {
        id: login
        SignInForm {
            objectName: "signInForm"
            session: window.view.pane.session
        }
    }
    Component {
        id: panes
        PaneArea {
            objectName: "paneArea"
            view: window.view
            service: window.service
        }
    }
    Loader {
        anchors.fill: parent
        active: window.view.endNotice !== ""
        sourceComponent: EndQuestion {
            objectName: "endQuestion"
            view: window.view
        }
    }
}
