import QtQuick 2.15
import "."

// A level from 0 to 1, green, then amber, then red.
Rectangle {
    id: root
    property real level: 0
    property string name
    implicitHeight: 12
    implicitWidth: 160
    radius: height / 2
    color: Theme.raised
    border.color: Theme.border
    Accessible.role: Accessible.ProgressBar
    Accessible.name: root.name
    Accessible.description: qsTr("%1 percent").arg(Math.round(root.level * 100))

    // A change of what nobody sees would draw the window all the same.
    readonly property real shown: visible ? Math.min(1, level) : 0
    Rectangle {
        x: 2
        y: 2
        height: parent.height - 4
        width: Math.max(0, (parent.width - 4) * root.shown)
        radius: height / 2
        color: root.shown > 0.95 ? Theme.live : root.shown > 0.85 ? "#d9a300" : Theme.good
    }
}
