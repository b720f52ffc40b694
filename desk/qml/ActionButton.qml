import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// A button; highlighted, the one that a page or dialog is for.
Button {
    id: root
    leftPadding: 14
    rightPadding: 14
    implicitHeight: 32
    font.pixelSize: Theme.textSize
    Accessible.role: Accessible.Button
    Accessible.name: text
    // Enter presses it, too: on the talk page the space bar is the talk key.
    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()
    function press() {
        if (checkable)
            toggle();
        clicked();
    }
    background: Rectangle {
        radius: 4
        color: root.highlighted ? (root.down ? Qt.darker(Theme.accent, 1.2) : Theme.accent)
             : root.down || root.checked ? Theme.border : root.hovered ? Qt.darker(Theme.raised, 1.04) : Theme.raised
        opacity: root.enabled ? 1 : 0.5
        border.width: root.visualFocus ? 2 : 1
        border.color: root.visualFocus ? (root.highlighted ? Theme.text : Theme.accent) : root.highlighted ? Theme.accent : Theme.border
    }
    contentItem: PlainText {
        text: root.text
        font: root.font
        color: root.highlighted ? Theme.accentText : Theme.text
        opacity: root.enabled ? 1 : 0.5
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
}
