import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// A dialog with a form whose Save works only while the form makes sense, and that stays until the server has agreed.
Dialog {
    id: root
    property bool valid: true
    property string hint
    property alias request: pending
    property int wanted: 520 // height
    property string saveText: qsTr("Save")
    signal save()

    modal: true
    anchors.centerIn: Overlay.overlay
    width: Math.min(560, (Overlay.overlay ? Overlay.overlay.width : 600) - 40)
    closePolicy: pending.busy ? Popup.NoAutoClose : Popup.CloseOnEscape
    height: Math.min(wanted, (Overlay.overlay ? Overlay.overlay.height : wanted) - 24)
    padding: 18
    header: DialogTitle { text: root.title }
    onAboutToShow: pending.reset()

    function submit() {
        if (valid && !pending.busy)
            save();
    }

    PendingRequest {
        id: pending
        onSucceeded: root.close()
    }
    footer: Pane {
        padding: 14
        background: Rectangle { color: Theme.raised }
        RowLayout {
            width: parent.width
            spacing: 8
            PlainText {
                Layout.fillWidth: true
                text: pending.problem !== "" ? pending.problem : !root.valid ? root.hint : ""
                wrapMode: Text.Wrap
                color: pending.problem !== "" ? Theme.bad : Theme.quiet
                font.pixelSize: Theme.smallSize
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }
            BusyIndicator {
                implicitHeight: 28
                implicitWidth: 28
                visible: pending.busy
                running: pending.busy
            }
            ActionButton {
                text: qsTr("Cancel")
                enabled: !pending.busy
                onClicked: root.close()
            }
            ActionButton {
                objectName: "save"
                text: root.saveText
                highlighted: true
                enabled: root.valid && !pending.busy
                onClicked: root.submit()
            }
        }
    }
}
