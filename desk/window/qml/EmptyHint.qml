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

    Text {
        Layout.alignment: Qt.AlignHCenter
        text: root.title
        color: Theme.text
        font.pixelSize: 17
    }
    QuietText {
        Layout.alignment: Qt.AlignHCenter
        Layout.maximumWidth: 560
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
