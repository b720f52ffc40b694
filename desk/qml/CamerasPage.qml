import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// The cameras of the server.
DeskPage {
    id: root
    readonly property CameraModel cameras: desk.cameras

    property string testName // of the camera that was tested last
    property string testResult
    property bool testGood: true
    readonly property string testing: desk.cameraTest.camera

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
            objectName: "findCamera"
            text: qsTr("Find cameras…")
            enabled: desk.connection.online
            onClicked: finder.search()
        }
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
        onTestRequested: function(entry) { if (entry.extraEnabled) entry.extra(); }
        delegate: RecordRow {
            title: cameraName || ""
            detail: cameraIsRecord ? dialog.kindName(cameraKind) + "  ·  " + cameraAddress : qsTr("Part of the server; it cannot be changed.")
            readonly property bool tested: cameraId !== undefined && root.testing !== "" && root.testing === cameraId
            note: tested ? qsTr("testing…") : cameraOnline ? qsTr("Online") : qsTr("Offline")
            noteGood: tested || cameraOnline || false
            extraText: tested ? qsTr("Cancel") : qsTr("Test")
            extraEnabled: tested || (root.testing === "" && desk.talk.phase === TalkControl.Idle && desk.connection.online)
            onExtra: {
                root.testResult = "";
                if (tested)
                    desk.cameraTest.cancel();
                else if (desk.cameraTest.start(cameraId, cameraSettings.halfDuplex))
                    root.testName = cameraName;
            }
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
            otherAction: search.text === "" ? qsTr("Find cameras…") : ""
            otherEnabled: desk.connection.online
            onOtherTriggered: finder.search()
        }
    }
    PlainText {
        objectName: "cameraTestResult"
        Layout.fillWidth: true
        visible: text !== ""
        text: root.testResult
        wrapMode: Text.Wrap
        color: root.testGood ? Theme.good : Theme.bad
        font.pixelSize: Theme.textSize
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
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
        function onServerChanged() { deletion.reset(); root.testResult = ""; }
    }
    Connections {
        target: desk.cameraTest
        function onTested(camera, good, text) {
            root.testGood = good;
            root.testResult = qsTr("%1: %2").arg(root.testName).arg(text);
        }
    }
    FindCamerasDialog {
        id: finder
        onChosen: function(name, address) { dialog.createFor(name, address); }
    }
    ConfirmDialog {
        id: confirm
        property string camera
        title: qsTr("Delete a camera")
        onAccepted: deletion.begin(desk.cameraRequests.remove(camera))
    }
    CameraDialog { id: dialog }
}
