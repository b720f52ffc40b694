import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// A switch.
Switch {
    id: root
    implicitHeight: 28
    indicator: Rectangle {
        implicitWidth: 40
        implicitHeight: 20
        x: root.leftPadding
        y: (root.height - height) / 2
        radius: 10
        color: root.checked ? Theme.accent : Theme.raised
        border.width: root.visualFocus ? 2 : 1
        border.color: root.visualFocus ? Theme.text : root.checked ? Theme.accent : Theme.quiet
        Rectangle {
            x: root.checked ? parent.width - width - 3 : 3
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            radius: 7
            color: root.checked ? Theme.accentText : Theme.quiet
        }
    }
}
