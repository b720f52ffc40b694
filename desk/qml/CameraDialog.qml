import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// Adds a camera, or changes one. A password is never shown; one that is left empty stays as it is.
FormDialog {
    id: root
    property string camera // its id; empty for a new one
    property var kinds: []
    readonly property string kind: kinds.length > kindList.currentIndex && kindList.currentIndex >= 0 ? kinds[kindList.currentIndex] : ""

    function create() { createFor("", ""); }
    // For one that a search found.
    function createFor(name, address) {
        fill({ id: "", name: name, kind: "onvif", address: address, user: "", settings: desk.cameraRequests.defaultSettings() });
        title = qsTr("Add a camera");
        open();
    }
    function edit(record) {
        fill(record);
        title = qsTr("Camera \"%1\"").arg(record.name);
        open();
    }
    function fill(record) {
        camera = record.id;
        kinds = ["onvif", "simulated"].indexOf(record.kind) >= 0 ? ["onvif", "simulated"] : [record.kind, "onvif", "simulated"];
        kindList.currentIndex = kinds.indexOf(record.kind);
        nameField.text = record.name;
        address.text = record.address;
        user.text = record.user;
        password.text = "";
        const fields = [nameField, address, user, password];
        for (let i = 0; i < fields.length; ++i)
            fields[i].touched = false;
        advanced.fill(record.settings);
        parts.currentIndex = 0;
        abilities.reset();
    }
    function kindName(name) {
        return name === "onvif" ? qsTr("Network camera (ONVIF, RTSP)") : name === "simulated" ? qsTr("Simulated camera") : name;
    }
    function record() {
        return { camName: nameField.text, camKind: kind, camAddress: address.text.trim(), username: user.text, password: password.text, camSettings: advanced.settings() };
    }

    objectName: "cameraDialog"
    wanted: 580
    onOpened: nameField.field.forceActiveFocus()
    valid: nameField.valid && address.valid && user.valid && password.valid && advanced.valid
    hint: nameField.text.trim() === "" || address.text.trim() === "" ? qsTr("A name and an address are needed.")
        : !nameField.valid ? qsTr("The name is not right.")
        : !address.valid ? qsTr("The address is not right.")
        : !user.valid || !password.valid ? qsTr("User name or password are not right.")
        : qsTr("An advanced setting is not right.")
    onSave: request.begin(camera === "" ? desk.cameraRequests.add(record()) : desk.cameraRequests.update(camera, record()))
    request.serversWords: true

    contentItem: ColumnLayout {
        spacing: 12
        ChoiceBar {
            id: parts
            Layout.fillWidth: true
            stretch: true
            choices: [qsTr("Camera"), qsTr("Advanced"), qsTr("Abilities")]
        }
        StackLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            currentIndex: parts.currentIndex
            ColumnLayout {
                spacing: 10
                FormField {
                    id: nameField
                    objectName: "cameraName"
                    Layout.fillWidth: true
                    label: qsTr("Name")
                    problem: text.trim() === "" ? qsTr("Give the camera a name.") : text.length > desk.protocol.maxNameLength ? qsTr("At most %1 characters.").arg(desk.protocol.maxNameLength) : ""
                    field.onAccepted: root.submit()
                }
                PlainText { text: qsTr("Kind"); color: Theme.text; font.pixelSize: Theme.textSize }
                DropDown {
                    id: kindList
                    objectName: "cameraKind"
                    Layout.fillWidth: true
                    model: root.kinds.map(root.kindName)
                    onActivated: abilities.reset()
                    Accessible.name: qsTr("Kind")
                }
                FormField {
                    id: address
                    objectName: "cameraAddress"
                    Layout.fillWidth: true
                    label: qsTr("Address")
                    problem: desk.cameraRequests.isAddress(text.trim()) ? "" : qsTr("An IP address or a host name, also with a port like host:8080; a whole address with http:// or https://; or that of its stream with rtsp:// or rtsps://.")
                    field.placeholderText: qsTr("10.0.0.5 or rtsp://10.0.0.5:554/path")
                    field.onAccepted: root.submit()
                    onTextChanged: abilities.reset()
                }
                RowLayout {
                    spacing: 10
                    FormField {
                        id: user
                        objectName: "cameraUser"
                        Layout.fillWidth: true
                        Layout.preferredWidth: 1
                        label: qsTr("User name")
                        onTextChanged: abilities.reset()
                        problem: text.length > desk.protocol.maxCredentialLength ? qsTr("At most %1 characters.").arg(desk.protocol.maxCredentialLength) : ""
                        field.onAccepted: root.submit()
                    }
                    FormField {
                        id: password
                        objectName: "cameraPassword"
                        Layout.fillWidth: true
                        Layout.preferredWidth: 1
                        label: qsTr("Password")
                        onTextChanged: abilities.reset()
                        field.echoMode: TextInput.Password
                        field.placeholderText: root.camera !== "" ? qsTr("empty: as before") : ""
                        problem: text.length > desk.protocol.maxCredentialLength ? qsTr("At most %1 characters.").arg(desk.protocol.maxCredentialLength)
                               : text !== "" && user.text === "" ? qsTr("A password needs a user name.") : ""
                        field.onAccepted: root.submit()
                    }
                }
                QuietText {
                    Layout.fillWidth: true
                    text: root.camera === "" ? qsTr("The server logs in at the camera with them; most cameras want a login.")
                                             : qsTr("The password is not shown. Without a user name the camera loses both.")
                }
                Item { Layout.fillHeight: true }
            }
            CameraSettingsForm { id: advanced }
            CameraAbilities {
                id: abilities
                askable: address.valid && user.valid && password.valid && advanced.valid
                onAsked: request.begin(desk.cameraRequests.ask(root.camera, root.record()))
            }
        }
    }

    Connections {
        target: desk.cameraRequests
        function onAnswered(success, code) { root.request.answer(success, code, 0); }
    }
}
