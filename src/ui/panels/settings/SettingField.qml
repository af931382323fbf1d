// A value that is typed.
import QtQuick
import Velmora

ValueField {
    property real room: 0
    signal entered

    implicitWidth: 88
    activeFocusOnTab: true
    onActiveFocusChanged: {
        if (activeFocus) {
            selectAll();
            entered();
        }
    }
}
