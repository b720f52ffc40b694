import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// Looks for cameras in the networks of the server. Anybody may answer a search: a login is typed only once one was chosen.
Dialog {
    id: root
    property var cameras: []
    property bool searched: false
    signal chosen(string name, string address)

    function search() {
        open();
        cameras = [];
        searched = false;
        pending.begin(desk.cameraRequests.find());
        frame.list.forceActiveFocus();
    }
    function take(camera) {
        if (camera.address === "")
            return;
        close();
        chosen(camera.name, camera.address);
    }

    objectName: "findCameras"
    title: qsTr("Cameras in the network of the server")
    modal: true
    anchors.centerIn: Overlay.overlay
    width: Math.min(680, (Overlay.overlay ? Overlay.overlay.width : 700) - 40)
    height: Math.min(560, (Overlay.overlay ? Overlay.overlay.height : 560) - 24)
    closePolicy: Popup.CloseOnEscape
    padding: 18
    header: DialogTitle { text: root.title }
    onClosed: pending.reset()

    PendingRequest {
        id: pending
        serversWords: true
        onSucceeded: root.searched = true
    }
    Connections {
        target: desk.cameraRequests
        function onFound(cameras) {
            if (pending.busy && desk.watch.lastAnswered() === pending.number)
                root.cameras = cameras;
        }
        function onAnswered(success, code) { pending.answer(success, code, 0); }
    }

    contentItem: ListFrame {
        id: frame
        objectName: "foundCameras"
        name: root.title
        model: root.cameras
        onOpenRequested: function(entry) { root.take(entry.found); }
        delegate: RecordRow {
            readonly property var found: modelData
            title: found.name
            detail: found.address !== "" ? found.address : qsTr("It gives no address of its own.")
            footnote: found.detail
            editable: false
            removable: false
            extraText: qsTr("Use…")
            extraEnabled: found.address !== ""
            onExtra: root.take(found)
        }
        EmptyHint {
            anchors.centerIn: parent
            visible: frame.count === 0 && !pending.busy
            title: pending.problem !== "" ? pending.problem : root.searched ? qsTr("No camera answered.") : ""
            hint: root.searched ? qsTr("Cameras answer only in the network of the server. Add others by their address.") : ""
        }
        BusyIndicator {
            anchors.centerIn: parent
            visible: pending.busy
            running: pending.busy
            Accessible.name: qsTr("Searching…")
        }
    }
    footer: Pane {
        padding: 14
        background: Rectangle { color: Theme.raised }
        RowLayout {
            width: parent.width
            spacing: 8
            PlainText {
                Layout.fillWidth: true
                text: qsTr("What answers is not checked: choose only what you know.")
                wrapMode: Text.Wrap
                color: Theme.quiet
                font.pixelSize: Theme.smallSize
            }
            ActionButton {
                text: qsTr("Search again")
                enabled: !pending.busy
                onClicked: root.search()
            }
            ActionButton {
                text: qsTr("Close")
                onClicked: root.close()
            }
        }
    }
}
