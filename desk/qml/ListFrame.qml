import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// A list in a frame: reached by Tab, moved through by arrows, its place in it visible. Its rows are used again: one that
// waits for a record has none, and is asked all the same when the language changes. So a role may be undefined.
Rectangle {
    id: root
    property alias list: view
    property alias model: view.model
    property alias delegate: view.delegate
    property alias count: view.count
    property string name
    default property alias overlay: over.data
    // A key asks for the current entry: Enter opens it, Delete deletes it, the space bar switches it, T tests it.
    signal openRequested(Item entry)
    signal deleteRequested(Item entry)
    signal toggleRequested(Item entry)
    signal testRequested(Item entry)

    color: Theme.surface
    border.color: view.activeFocus ? Theme.accent : Theme.border
    border.width: view.activeFocus ? 2 : 1
    radius: Theme.radius

    ListView {
        id: view
        anchors { fill: parent; margins: 3 }
        clip: true
        reuseItems: true
        cacheBuffer: 200
        activeFocusOnTab: true
        keyNavigationEnabled: true
        boundsBehavior: Flickable.StopAtBounds
        highlightMoveDuration: 0
        highlightResizeDuration: 0
        currentIndex: -1
        onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0) currentIndex = 0
        Keys.onReturnPressed: if (currentItem) root.openRequested(currentItem)
        Keys.onEnterPressed: if (currentItem) root.openRequested(currentItem)
        Keys.onDeletePressed: if (currentItem) root.deleteRequested(currentItem)
        Keys.onSpacePressed: if (currentItem) root.toggleRequested(currentItem)
        Keys.onPressed: function(event) {
            if (count === 0 || (event.modifiers & ~Qt.KeypadModifier) !== 0)
                return;
            if (event.key === Qt.Key_Home)
                currentIndex = 0;
            else if (event.key === Qt.Key_End)
                currentIndex = count - 1;
            else if (event.key === Qt.Key_T && currentItem)
                root.testRequested(currentItem);
            else
                return;
            event.accepted = true;
        }
        highlight: Rectangle {
            color: "transparent"
            radius: Theme.radius
            z: 2
            border.width: view.activeFocus ? 2 : 0
            border.color: Theme.accent
        }
        ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }
        Accessible.role: Accessible.List
        Accessible.name: root.name
    }
    Item {
        id: over
        anchors.fill: parent
    }
}
