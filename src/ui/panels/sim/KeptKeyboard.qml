// Keeps the keyboard within a panel of cards: when the control that has it goes, with its row, its card's content or its
// text, the next one of the card takes its place. Where the card has none left, that is for the panel to solve.
import QtQuick
import QtQuick.Window

Item {
    id: keeper

    required property Item cards  // the item whose children they are
    property bool pointed: false  // the pointer and not a key led here
    signal emptied

    property Item card: null
    property Item control: null  // of the card, with the keyboard
    property int place: 0  // of the control among the card's
    readonly property Item focused: Window.activeFocusItem

    function cardOf(item) {
        while (item && item.parent !== cards)
            item = item.parent;
        return item;
    }
    // In the order of Tab.
    function controlsOf(item) {
        if (!item.visible || !item.enabled)
            return [];
        if (item.activeFocusOnTab)
            return [item];
        const all = [];
        for (let i = 0; i < item.children.length; ++i)
            all.push(...controlsOf(item.children[i]));
        return all;
    }
    function look() {
        const at = cardOf(focused), all = at ? controlsOf(at) : [];
        const now = all.findIndex(one => one.activeFocus);
        if (now >= 0) {
            card = at;
            control = all[now];
            place = now;
        } else {
            Qt.callLater(settle);  // when what happens to the card has happened as a whole
        }
    }
    function settle() {
        const there = control && control.visible && control.enabled && cardOf(control) === card;
        if (!card || !visible || (there && (control.activeFocus || !focused)))
            return;
        // only the frame around what went has the keyboard, or what nobody sees
        const lost = !there && (!focused || !focused.visible || holds(focused, card));
        const all = lost ? controlsOf(card) : [];
        card = control = null;
        if (all.length > 0)
            all[Math.min(place, all.length - 1)].forceActiveFocus(pointed ? Qt.MouseFocusReason : Qt.TabFocusReason);
        else if (lost)
            emptied();
    }
    function holds(outer, item) {
        while (item && item !== outer)
            item = item.parent;
        return item === outer;
    }

    onFocusedChanged: look()
    Connections {
        target: keeper.control
        function onVisibleChanged() {
            keeper.look();
        }
    }
}
