import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// A check box.
CheckBox {
    id: root
    implicitHeight: 30
    indicator: Rectangle {
        implicitWidth: 18
        implicitHeight: 18
        x: root.leftPadding
        y: (root.height - height) / 2
        radius: 3
        color: root.checked ? Theme.accent : "transparent"
        border.width: root.visualFocus ? 3 : 1.5
        border.color: root.checked || root.visualFocus ? Theme.accent : Theme.quiet
        opacity: root.enabled ? 1 : 0.5
        PlainText {
            anchors.centerIn: parent
            visible: root.checked
            text: "✓"
            color: Theme.accentText
            font { pixelSize: 13; weight: Font.Bold }
        }
    }
    contentItem: PlainText {
        leftPadding: root.indicator.width + 8
        text: root.text
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        color: Theme.text
        opacity: root.enabled ? 1 : 0.5
        font.pixelSize: Theme.textSize
    }
}
