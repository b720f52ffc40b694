import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// The cameras of the server.
DeskPage {
    id: root
    readonly property CameraModel cameras: desk.cameras

    editor: dialog
    function focusSearch() { search.forceActiveFocus(); }

    RowLayout {
        Layout.fillWidth: true
        spacing: 12
        SearchField {
            id: search
            objectName: "cameraSearch"
            Layout.preferredWidth: 260
            placeholderText: qsTr("Search by name or address")
            onTextChanged: root.cameras.search = text
        }
        Item { Layout.fillWidth: true }
        ActionButton {
            objectName: "addCamera"
            highlighted: true
            text: qsTr("Add a camera…")
            onClicked: root.addNew()
        }
    }

    ListFrame {
        id: frame
        objectName: "cameraList"
        Layout.fillWidth: true
        Layout.fillHeight: true
        name: qsTr("Cameras")
        model: root.cameras
        onOpenRequested: function(entry) { if (entry.editable) entry.edit(); }
        onDeleteRequested: function(entry) { if (entry.removable) entry.remove(); }
        delegate: RecordRow {
            title: cameraName || ""
            detail: cameraIsRecord ? dialog.kindName(cameraKind) + "  ·  " + cameraAddress : qsTr("Part of the server; it cannot be changed.")
            note: cameraOnline ? qsTr("Online") : qsTr("Offline")
            noteGood: cameraOnline || false
            editable: cameraIsRecord || false
            removable: editable
            onEdit: dialog.edit({ id: cameraId, name: cameraName, kind: cameraKind, address: cameraAddress, user: cameraUser, settings: cameraSettings })
            onRemove: {
                confirm.camera = cameraId;
                confirm.question = qsTr("Delete the camera \"%1\"? This cannot be undone. A talk with it goes on.").arg(cameraName);
                confirm.open();
            }
        }
        EmptyHint {
            anchors.centerIn: parent
            visible: frame.count === 0
            title: search.text !== "" ? qsTr("Nothing is found.") : qsTr("No cameras yet.")
            hint: search.text !== "" ? qsTr("No camera's name or address has this text in it.") : qsTr("A camera needs a name and its address.")
            action: search.text === "" ? qsTr("Add a camera…") : ""
            onTriggered: root.addNew()
        }
    }
    PlainText {
        Layout.fillWidth: true
        visible: deletion.problem !== ""
        text: deletion.problem
        wrapMode: Text.Wrap
        color: Theme.bad
        font.pixelSize: Theme.textSize
    }

    PendingRequest { id: deletion; serversWords: true }
    Connections {
        target: desk.cameraRequests
        function onAnswered(success, code) { deletion.answer(success, code, 0); }
    }
    Connections {
        target: desk.connection
        function onServerChanged() { deletion.reset(); }
    }
    ConfirmDialog {
        id: confirm
        property string camera
        title: qsTr("Delete a camera")
        onAccepted: deletion.begin(desk.cameraRequests.remove(camera))
    }
    CameraDialog { id: dialog }
}
