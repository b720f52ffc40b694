import QtQuick 2.15
import "."

// The frame of a text field.
Rectangle {
    property bool active: false
    property bool wrong: false
    implicitHeight: 32
    implicitWidth: 120
    radius: 3
    color: Theme.surface
    border.width: active ? 2 : 1
    border.color: wrong ? Theme.bad : active ? Theme.accent : Theme.quiet
}
