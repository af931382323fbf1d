// A pane's settings. Every change holds at once.
import QtQuick
import Velmora

FloatingPanel {
    id: panel

    required property SettingsViewModel settings
    required property SessionViewModel session
    required property PanelsViewModel panels
    signal keysRequested

    panelId: "config"
    title: qsTr("Settings")
    defaultSize: Qt.size(640, 560)
    minSize: Qt.size(300, 240)
    onOpenChanged: if (!open) sheet.close()

    body: Component {
        FocusScope {
            id: content

            SettingsHead {
                id: head
                x: 16
                y: 12
                width: parent.width - 32
                settings: panel.settings
                onKeysRequested: panel.keysRequested()
            }
            SettingsColumns {
                anchors.top: head.bottom
                anchors.topMargin: 12
                anchors.bottom: parent.bottom
                anchors.bottomMargin: 8
                width: parent.width
                panelWidth: panel.width
                settings: panel.settings
                onAsked: action => panel.carryOut(action)
            }
        }
    }

    function carryOut(action) {
        if (action === "templatesPanelOpen")
            panels.templatesPanelOpen = true;
        else if (action === "reset")
            settings.reset();
        else if (action === "resetAccount")
            settings.resetAccount();
        else if (action === "logout")
            session.signOutAndClose();
        else if (action === "export" || action === "import")
            sheet.ask(action === "export");
    }

    FileSheet {
        id: sheet
        objectName: "settingsFile"

        function ask(toSave) {
            saving = toSave;
            title = toSave ? qsTr("Export settings") : qsTr("Import settings");
            acceptText = toSave ? qsTr("Export") : qsTr("Import");
            open();
        }

        suffix: ".json"
        proposal: "velmora-settings.json"
        onChosen: path => {
            const problem = saving ? panel.settings.exportTo(path) : panel.settings.importFrom(path);
            if (problem !== "")
                fail(problem);
            else
                close();
        }
    }
}
