// A sheet in which a person chooses a file, to open it or to save it. What a file that is there already would lose is
// asked once. The sheet stays until its owner closes it or says what went wrong.
import QtQuick
import Velmora

Sheet {
    id: sheet

    property bool saving: false
    property alias suffix: browser.suffix
    property string proposal  // a name to save under
    property string problem
    property string replacing  // the file that is to be asked about
    signal chosen(string path)

    function fail(text) {
        problem = text;
    }
    function take() {
        const path = saving ? browser.resolvedToSave(entry.text) : browser.resolved(entry.text);
        if (browser.isFolder(path))
            return goTo(path);
        problem = browser.problem(path, saving);
        if (problem !== "")
            return;
        if (saving && browser.exists(path) && replacing !== path) {
            replacing = path;
            return;
        }
        replacing = "";
        chosen(path);
    }
    function goTo(path) {
        browser.show(path);
        entry.text = saving ? proposal : "";
        problem = "";
        replacing = "";
        list.contentY = 0;
        entry.field.forceActiveFocus();
    }

    width: Math.min(480, parent ? parent.width - 32 : 480)
    acceptText: replacing !== "" ? qsTr("Replace") : saving ? qsTr("Save") : qsTr("Open")
    onAccepted: take()
    onAboutToShow: {
        browser.show(browser.folder);
        entry.text = saving ? proposal : "";
        problem = "";
        replacing = "";
    }
    onOpened: {
        entry.field.forceActiveFocus();
        entry.field.selectAll();
    }

    FileBrowser {
        id: browser
    }
    TextEntry {
        id: entry
        objectName: "filePath"
        width: parent.width
        name: sheet.title
        prompt: qsTr("File")
        onAccepted: sheet.take()
        field.onTextEdited: {
            sheet.problem = "";
            sheet.replacing = "";
        }
        onTyped: event => {  // the next control when there is nothing to complete
            if (event.key !== Qt.Key_Tab || event.modifiers !== Qt.NoModifier)
                return;
            const more = browser.completed(text);
            event.accepted = more !== text;
            text = more;
        }
    }
    Label {
        width: parent.width
        elide: Text.ElideLeft
        font.pixelSize: 11
        color: Theme.textFaint
        text: browser.folder
    }
    Rectangle {
        width: parent.width
        height: Math.max(88, Math.min(224, (sheet.parent ? sheet.parent.height : 600) - 304))
        radius: 4
        color: Theme.background
        border.width: list.activeFocus ? 2 : 1
        border.color: list.activeFocus ? Theme.focus : Theme.line

        ListView {
            id: list
            objectName: "fileEntries"
            anchors.fill: parent
            anchors.margins: 4
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            activeFocusOnTab: true
            model: [{ name: "..", isFolder: true }].concat(browser.entries)
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Folders and files")
            Keys.onReturnPressed: if (currentItem) currentItem.pick()
            Keys.onEnterPressed: if (currentItem) currentItem.pick()
            delegate: Rectangle {
                id: one
                required property var modelData
                required property int index

                function pick() {
                    if (modelData.isFolder)
                        return sheet.goTo(browser.resolved(modelData.name));
                    entry.text = modelData.name;
                    sheet.problem = "";
                    sheet.replacing = "";
                }

                objectName: "entry " + modelData.name
                width: ListView.view.width
                height: 28
                radius: 4
                color: area.containsMouse || (list.activeFocus && ListView.isCurrentItem) ? Theme.pressed : "transparent"
                Accessible.role: Accessible.ListItem
                Accessible.name: modelData.name
                Icon {
                    x: 8
                    anchors.verticalCenter: parent.verticalCenter
                    width: 14
                    height: 14
                    name: one.modelData.isFolder ? "folder" : "file"
                }
                Label {
                    x: 32
                    width: parent.width - 40
                    anchors.verticalCenter: parent.verticalCenter
                    elide: Text.ElideMiddle
                    font.pixelSize: Theme.small
                    text: one.modelData.name
                }
                MouseArea {
                    id: area
                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: {
                        list.currentIndex = one.index;
                        one.pick();
                    }
                    onDoubleClicked: if (!one.modelData.isFolder) sheet.take()
                }
            }
        }
    }
    Label {
        objectName: "fileProblem"
        width: parent.width
        visible: text !== ""
        wrapMode: Text.Wrap
        font.pixelSize: Theme.small
        color: sheet.problem !== "" ? Theme.error : Theme.warning
        text: sheet.problem !== "" ? sheet.problem
                                   : sheet.replacing !== "" ? qsTr("That file is there already. Replace it?") : ""
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
}
