import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// One entry of the rail on the left.
AbstractButton {
    id: root
    property string shortcut
    checkable: true
    autoExclusive: true
    implicitHeight: 44
    implicitWidth: 168
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.PageTab
    Accessible.name: text
    Keys.onReturnPressed: clicked() // on the talk page the space bar is the talk key
    Keys.onEnterPressed: clicked()
    ToolTip.visible: hovered && shortcut !== ""
    ToolTip.delay: 600
    ToolTip.text: shortcut

    background: Rectangle {
        radius: Theme.radius
        color: root.checked ? Theme.accent : root.hovered ? Theme.raised : "transparent"
        border.width: root.visualFocus ? 2 : 0
        border.color: root.checked ? Theme.text : Theme.accent
    }
    contentItem: PlainText {
        leftPadding: 8
        verticalAlignment: Text.AlignVCenter
        text: root.text
        elide: Text.ElideRight
        color: root.checked ? Theme.accentText : Theme.text
        font { pixelSize: 15; weight: root.checked ? Font.DemiBold : Font.Normal }
    }
}
