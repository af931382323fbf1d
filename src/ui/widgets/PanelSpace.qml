// The part of a pane that its floating panels keep to; they are its children. It lets the pointer through.
import QtQuick

Item {
    id: space

    property int topmost: 0
    signal vacated  // a panel has closed that had the keyboard

    function raise(panel) {
        if (panel.z < topmost || topmost === 0)
            panel.z = ++topmost;
    }
}
