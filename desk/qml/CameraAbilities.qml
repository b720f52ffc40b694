import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// What a camera can do, by its own answers, before anybody talks to it.
ColumnLayout {
    id: root
    property var lines: []
    property bool askable: true
    property alias request: pending
    signal asked()

    // What was answered is not of this camera any more.
    function reset() {
        pending.reset();
        lines = [];
    }
    spacing: 10

    PendingRequest { id: pending; serversWords: true }
    Connections {
        target: desk.cameraRequests
        function onKnown(lines) {
            if (pending.busy && desk.watch.lastAnswered() === pending.number)
                root.lines = lines;
        }
        function onAnswered(success, code) { pending.answer(success, code, 0); }
    }

    RowLayout {
        spacing: 10
        ActionButton {
            objectName: "askCamera"
            text: qsTr("What can it do?")
            enabled: root.askable && !pending.busy
            onClicked: { root.lines = []; root.asked(); }
        }
        BusyIndicator {
            implicitHeight: 28
            implicitWidth: 28
            visible: pending.busy
            running: pending.busy
        }
        Item { Layout.fillWidth: true }
    }
    QuietText {
        Layout.fillWidth: true
        color: pending.problem !== "" ? Theme.bad : Theme.quiet
        text: pending.problem !== "" ? pending.problem
            : qsTr("The server asks the camera at this address, with this login. It takes up to ten seconds.")
    }
    ListFrame {
        id: answers
        objectName: "cameraAnswers"
        Layout.fillWidth: true
        Layout.fillHeight: true
        name: qsTr("What the camera can do")
        model: root.lines
        delegate: PlainText {
            width: ListView.view ? ListView.view.width : 0
            padding: 6
            text: modelData
            wrapMode: Text.Wrap
            color: Theme.text
            font.pixelSize: Theme.textSize
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}
