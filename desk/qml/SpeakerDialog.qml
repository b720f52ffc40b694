import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// Adds a speaker, or changes one.
FormDialog {
    id: root
    property int speaker: 0

    function create() {
        fill({ id: 0, name: "", ip: "", port: 80, user: "", password: "", cameras: [] });
        title = qsTr("Add a speaker");
        open();
    }
    function edit(record) {
        fill(record);
        title = qsTr("Speaker \"%1\"").arg(record.name);
        open();
    }
    function fill(record) {
        speaker = record.id;
        nameField.text = record.name;
        address.text = record.ip;
        port.text = record.port;
        user.text = record.user;
        password.text = record.password;
        cameras.clearSearch();
        cameras.model = desk.targets.cameras();
        cameras.checkedIds = record.cameras ? Array.from(record.cameras) : [];
        nameField.touched = address.touched = port.touched = user.touched = password.touched = false;
    }

    objectName: "speakerDialog"
    wanted: 580
    onOpened: nameField.field.forceActiveFocus()
    valid: nameField.valid && address.valid && port.valid && user.valid && password.valid
    hint: qsTr("A name, an address and a port are needed.")
    onSave: {
        const list = cameras.checkedIds;
        if (speaker === 0)
            request.begin(desk.plugin.addIPAudio(nameField.text, address.text, parseInt(port.text), user.text, password.text, list));
        else
            request.begin(desk.plugin.updateIPAudio(speaker, nameField.text, address.text, parseInt(port.text), user.text, password.text, list));
    }

    contentItem: ColumnLayout {
        spacing: 10
        FormField {
            id: nameField
            objectName: "speakerName"
            Layout.fillWidth: true
            label: qsTr("Name")
            problem: text.trim() === "" ? qsTr("Give the speaker a name.") : text.length > desk.protocol.maxNameLength ? qsTr("At most %1 characters.").arg(desk.protocol.maxNameLength) : ""
            field.onAccepted: root.submit()
        }
        RowLayout {
            spacing: 10
            FormField {
                id: address
                objectName: "speakerAddress"
                Layout.fillWidth: true
                label: qsTr("Address")
                problem: text === "" ? qsTr("An IP address or host name.") : desk.checkAddress(text)
                field.onAccepted: root.submit()
            }
            FormField {
                id: port
                objectName: "speakerPort"
                Layout.fillWidth: false
                Layout.preferredWidth: 110
                label: qsTr("Port")
                problem: /^[0-9]{1,5}$/.test(text) && parseInt(text) >= 1 && parseInt(text) <= desk.protocol.maxPort ? "" : qsTr("1 to %1.").arg(desk.protocol.maxPort)
                field.onAccepted: root.submit()
                field.inputMethodHints: Qt.ImhDigitsOnly
            }
        }
        RowLayout {
            spacing: 10
            FormField {
                id: user
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                label: qsTr("User name")
                problem: text.length > desk.protocol.maxCredentialLength ? qsTr("At most %1 characters.").arg(desk.protocol.maxCredentialLength) : ""
            }
            FormField {
                id: password
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                label: qsTr("Password")
                field.echoMode: TextInput.Password
                problem: text.length > desk.protocol.maxCredentialLength ? qsTr("At most %1 characters.").arg(desk.protocol.maxCredentialLength) : ""
            }
        }
        CheckList {
            id: cameras
            objectName: "speakerCameras"
            Layout.fillWidth: true
            Layout.fillHeight: true
            label: qsTr("Bound to cameras")
            idName: "modelData"
            emptyText: qsTr("The server has no cameras.")
        }
    }

    Connections {
        target: desk.targets
        enabled: root.visible
        function onListed() { cameras.model = desk.targets.cameras(); } // what is ticked stays so, by id
    }
    Connections {
        target: desk.plugin
        function onAddIPAudioResponse(success, code, id) { if (root.speaker === 0) root.request.answer(success, code, id); }
        function onUpdateIPAudioResponse(success, code, id) { if (root.speaker !== 0) root.request.answer(success, code, id); }
    }
}
