import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// What stands in the place of an empty list, and what can be done about it.
ColumnLayout {
    id: root
    property string title
    property string hint
    property string action
    signal triggered()

    spacing: Theme.space
    width: Math.min(parent.width - 40, 560)

    Text {
        Layout.fillWidth: true
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        text: root.title
        color: Theme.text
        font.pixelSize: 17
    }
    QuietText {
        Layout.fillWidth: true
        horizontalAlignment: Text.AlignHCenter
        text: root.hint
        font.pixelSize: Theme.textSize
    }
    ActionButton {
        Layout.alignment: Qt.AlignHCenter
        visible: root.action !== ""
        text: root.action
        onClicked: root.triggered()
    }
}
