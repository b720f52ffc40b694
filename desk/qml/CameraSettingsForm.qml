import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// How a camera is talked to: for those that do not work with the usual settings.
ColumnLayout {
    id: root
    readonly property bool valid: delay.valid && patience.valid && priority.valid
    readonly property var packetTimes: [20, 40, 80]
    property var codecs: [""] // and one that the camera's record has beside those that are known
    readonly property var transports: ["tcp", "udp"]
    spacing: 10

    function fill(settings) {
        transport.currentIndex = transports.indexOf(settings.transport);
        packetTime.currentIndex = packetTimes.indexOf(settings.packetTime);
        const offered = [""].concat(desk.cameraRequests.talkCodecs());
        codecs = offered.indexOf(settings.talkCodec) >= 0 ? offered : offered.concat([settings.talkCodec]);
        codec.currentIndex = codecs.indexOf(settings.talkCodec);
        delay.text = settings.readinessDelay;
        patience.text = settings.openTimeout;
        priority.text = settings.dscp;
        evenPace.checked = settings.evenPace;
        halfDuplex.checked = settings.halfDuplex;
        noDelay.checked = settings.noDelay;
        anyCertificate.checked = settings.anyCertificate;
        severalTalks.checked = settings.severalTalks;
        const fields = [delay, patience, priority];
        for (let i = 0; i < fields.length; ++i)
            fields[i].touched = false;
    }
    function settings() {
        return {
            transport: transports[transport.currentIndex],
            packetTime: packetTimes[packetTime.currentIndex],
            talkCodec: codecs[codec.currentIndex],
            readinessDelay: parseInt(delay.text),
            openTimeout: parseInt(patience.text),
            dscp: parseInt(priority.text),
            evenPace: evenPace.checked,
            halfDuplex: halfDuplex.checked,
            noDelay: noDelay.checked,
            anyCertificate: anyCertificate.checked,
            severalTalks: severalTalks.checked
        };
    }
    // What is wrong with a number; empty when nothing is. The server's rules count: it alone knows the limits.
    function problemOf(text, setting, words) {
        return /^[0-9]{1,6}$/.test(text) && desk.cameraRequests.areValid(setting) ? "" : words;
    }

    GridLayout {
        Layout.fillWidth: true
        columns: 2
        columnSpacing: 12
        rowSpacing: 6
        PlainText { text: qsTr("How sound is sent"); color: Theme.text; font.pixelSize: Theme.textSize }
        PlainText { text: qsTr("Packet length"); color: Theme.text; font.pixelSize: Theme.textSize }
        DropDown {
            id: transport
            objectName: "cameraTransport"
            Layout.fillWidth: true
            model: [qsTr("In the connection (TCP)"), qsTr("In packets of their own (UDP)")]
            Accessible.name: qsTr("How sound is sent")
        }
        DropDown {
            id: packetTime
            objectName: "cameraPacketTime"
            Layout.preferredWidth: 160
            model: root.packetTimes.map(function(time) { return qsTr("%1 ms").arg(time); })
            Accessible.name: qsTr("Packet length")
        }
    }
    PlainText { text: qsTr("Codec to the camera"); color: Theme.text; font.pixelSize: Theme.textSize }
    DropDown {
        id: codec
        objectName: "cameraCodec"
        Layout.fillWidth: true
        model: root.codecs.map(function(name) { return name === "" ? qsTr("The first that the camera offers") : name; })
        Accessible.name: qsTr("Codec to the camera")
    }
    RowLayout {
        spacing: 10
        FormField {
            id: delay
            objectName: "cameraDelay"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            label: qsTr("Wait after opening, ms")
            problem: root.problemOf(text, { readinessDelay: parseInt(text) }, qsTr("0 to %1.").arg(desk.protocol.maxReadinessDelay))
            field.inputMethodHints: Qt.ImhDigitsOnly
        }
        FormField {
            id: patience
            objectName: "cameraPatience"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            label: qsTr("Give up after, ms")
            problem: root.problemOf(text, { openTimeout: parseInt(text) }, qsTr("%1 to %2.").arg(desk.protocol.minOpenTimeout).arg(desk.protocol.maxOpenTimeout))
            field.inputMethodHints: Qt.ImhDigitsOnly
        }
        FormField {
            id: priority
            objectName: "cameraDscp"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            label: qsTr("Priority (DSCP)")
            problem: root.problemOf(text, { dscp: parseInt(text) }, qsTr("0 to %1.").arg(desk.protocol.maxDscp))
            field.inputMethodHints: Qt.ImhDigitsOnly
        }
    }
    ColumnLayout {
        spacing: 0
        TickBox { id: halfDuplex; objectName: "cameraHalfDuplex"; Layout.fillWidth: true; text: qsTr("Do not hear the camera while somebody talks (against echo)") }
        TickBox { id: evenPace; Layout.fillWidth: true; text: qsTr("Send packets at an even pace (against garbled sound)") }
        TickBox { id: noDelay; Layout.fillWidth: true; text: qsTr("Send each packet at once (TCP_NODELAY)") }
        TickBox { id: severalTalks; Layout.fillWidth: true; text: qsTr("Several may talk to the camera at a time") }
        TickBox { id: anyCertificate; Layout.fillWidth: true; text: qsTr("Take any certificate (rtsps, https)") }
    }
    QuietText {
        Layout.fillWidth: true
        text: qsTr("Most cameras work with what is set. The wait is for a camera that swallows the first words.")
    }
    Item { Layout.fillHeight: true }
}
