import QtQuick 2.15
import "."

// A page with one line.
DeskPage {
    id: root

    PlainText {
        objectName: "toyLine"
        text: qsTr("A page to play with")
        color: Theme.text
        font.pixelSize: Theme.textSize
    }
}
