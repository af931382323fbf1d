// A value that is typed.
import QtQuick
import Velmora

ValueField {
    property real room: 0
    signal entered

    width: 88
    activeFocusOnTab: true
    onActiveFocusChanged: if (activeFocus) entered()
}
