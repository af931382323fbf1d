// One window: the login form until somebody is signed in, then one pane or two.
import QtQuick
import QtQuick.Templates as T
import QtQuick.Window
import Velmora

Window {
    id: window

    required property WindowViewModel view
    required property ServiceViewModel service
    property ShellViewModel shell: null
    property PictureViewModel picture: null
    readonly property bool entered: view.pane.session.entered
    readonly property bool keysHeld: stage.popups.visible || view.endNotice !== ""  // by what is open
    readonly property bool keysCaptured: sheets.item ? sheets.item.keysCaptured : false  // the next one is only to be named

    title: "Velmora"
    color: Theme.background
    minimumWidth: entered ? 720 : 1000
    minimumHeight: entered ? 480 : 580
    // the shell closes it, and knows what has to be said or saved first
    onClosing: close => {
        close.accepted = false;
        view.closeWindow();
    }

    // a popup that closes leaves the keyboard to the window itself
    onActiveFocusItemChanged: Qt.callLater(window.passKeyboardOn)
    function passKeyboardOn() {
        if (activeFocusItem === contentItem && !stage.popups.visible)
            stage.forceActiveFocus();
    }

    Loader {
        id: stage
        objectName: "stage"
        readonly property Item popups: T.Overlay.overlay
        anchors.fill: parent
        focus: true
        sourceComponent: window.entered ? panes : login
        onLoaded: item.forceActiveFocus()
    }
    Connections {
        target: stage.popups
        function onVisibleChanged() {
            Qt.callLater(window.passKeyboardOn);
        }
    }
    Component {
        id: login
        LoginView {
            objectName: "loginView"
            session: window.view.pane.session
        }
    }
    Component {
        id: panes
        PaneArea {
            objectName: "paneArea"
            view: window.view
            service: window.service
            shell: window.shell
        }
    }
    Loader {
        anchors.fill: parent
        active: window.view.endNotice !== ""
        onActiveChanged: {
            if (!active)
                stage.forceActiveFocus();
        }
        sourceComponent: EndQuestion {
            objectName: "endQuestion"
            view: window.view
        }
    }
    Loader {
        id: sheets
        anchors.fill: parent
        active: window.shell !== null
        sourceComponent: ShellSheets {
            shell: window.shell
            pane: window.view.pane
            actions: window.view.actions
        }
    }
    Loader {
        active: window.picture !== null
        sourceComponent: PictureSheet {
            objectName: "pictureSheet"
            picture: window.picture
            visible: window.picture.taken
            onClosed: window.picture.drop()
        }
    }
    PickList {
        id: actionList
        objectName: "actionList"
        property bool inSecondPlace: false
        parent: T.Overlay.overlay
        x: Math.round((window.width - width) / 2)
        y: 64
        width: Math.min(520, window.width - 48)
        mostHeight: Math.min(480, window.height - 96)
        closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
        prompt: qsTr("Action, symbol or expiration")
        nothing: qsTr("Nothing of that name")
        provider: typed => window.view.actions ? window.view.actions.find(typed, inSecondPlace) : []
        onChosen: value => window.view.actions.take(value, inSecondPlace)
    }
    Connections {
        target: window.view
        function onActionListAsked(second) {
            actionList.inSecondPlace = second;
            actionList.open();
        }
    }
}
