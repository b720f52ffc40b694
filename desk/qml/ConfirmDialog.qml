import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// Asks before something is done that cannot be undone.
Dialog {
    id: root
    property string question
    property string action: qsTr("Delete")
    property string keepText: qsTr("Keep")
    modal: true
    anchors.centerIn: Overlay.overlay
    width: 440 // not by the window's, which comes later: the height of a question in lines follows from it
    closePolicy: Popup.CloseOnEscape
    onOpened: keep.forceActiveFocus()

    padding: 18
    header: DialogTitle { text: root.title }

    contentItem: PlainText {
        text: root.question
        wrapMode: Text.Wrap
        color: Theme.text
        font.pixelSize: Theme.textSize
    }
    footer: DialogButtonBox {
        padding: 14
        background: Rectangle { color: Theme.raised }
        ActionButton {
            id: keep
            text: root.keepText
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
        ActionButton {
            text: root.action
            DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
        }
    }
}
