import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// The server, and the desk's own settings.
DeskPage {
    id: root
    readonly property DeskConnection connection: desk.connection

    function focusSearch() { url.field.forceActiveFocus(); }
    function signIn() {
        fingerprint.touched = true;
        if (!url.valid || !fingerprint.valid)
            return;
        desk.settings.lastServer = url.text;
        connection.useRemote(url.text, user.text, secret.text, fingerprint.text);
    }

    ScrollView {
        id: scroll
        Layout.fillWidth: true
        Layout.fillHeight: true
        contentWidth: availableWidth

        ColumnLayout {
            width: Math.min(scroll.availableWidth, 620)
            spacing: 14

            RowLayout {
                spacing: 10
                Rectangle {
                    width: 14
                    height: 14
                    radius: 7
                    color: root.connection.online ? Theme.good : Theme.bad
                }
                PlainText {
                    objectName: "connectionState"
                    Layout.fillWidth: true
                    text: qsTr("%1: %2").arg(root.connection.stateText).arg(root.connection.server)
                    color: Theme.text
                    wrapMode: Text.Wrap
                    font { pixelSize: 16; weight: Font.DemiBold }
                }
            }
            PlainText {
                Layout.fillWidth: true
                visible: root.connection.reason !== "" && !root.connection.online
                text: root.connection.reason
                color: Theme.bad
                wrapMode: Text.Wrap
                font.pixelSize: Theme.textSize
            }
            RowLayout {
                spacing: 10
                ActionButton {
                    text: qsTr("Try again now")
                    visible: !root.connection.online
                    onClicked: root.connection.retry()
                }
                ActionButton {
                    text: qsTr("Use the server on this computer")
                    visible: !root.connection.local
                    onClicked: root.connection.useLocal()
                }
            }

            PlainText {
                Layout.topMargin: 10
                text: qsTr("Another server")
                color: Theme.text
                font { pixelSize: 16; weight: Font.DemiBold }
            }
            FormField {
                id: url
                objectName: "serverUrl"
                Layout.fillWidth: true
                label: qsTr("Address")
                text: root.connection.url !== "" ? root.connection.url : desk.settings.lastServer
                problem: root.connection.checkUrl(text)
                field.placeholderText: "wss://host:8440"
                field.onAccepted: root.signIn()
            }
            RowLayout {
                Layout.fillWidth: true
                spacing: 10
                FormField {
                    id: user
                    objectName: "serverUser"
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    label: qsTr("User name (empty for a token)")
                    text: root.connection.user
                    field.onAccepted: root.signIn()
                }
                FormField {
                    id: secret
                    objectName: "serverSecret"
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    label: user.text === "" ? qsTr("Token") : qsTr("Password")
                    field.echoMode: TextInput.Password
                    field.onAccepted: root.signIn()
                }
            }
            FormField {
                id: fingerprint
                objectName: "serverFingerprint"
                Layout.fillWidth: true
                label: qsTr("Fingerprint of the server's certificate, for wss")
                text: root.connection.fingerprint
                problem: root.connection.checkFingerprint(text)
                field.onAccepted: root.signIn()
            }
            ActionButton {
                objectName: "signIn"
                text: qsTr("Sign in")
                enabled: url.valid && fingerprint.valid
                onClicked: root.signIn()
            }

            PlainText {
                Layout.topMargin: 10
                text: qsTr("This desk")
                color: Theme.text
                font { pixelSize: 16; weight: Font.DemiBold }
            }
            GridLayout {
                columns: 2
                columnSpacing: 14
                rowSpacing: 8
                PlainText { text: qsTr("Colours"); color: Theme.text; font.pixelSize: Theme.textSize }
                DropDown {
                    id: theme
                    objectName: "themeChoice"
                    readonly property var values: ["system", "light", "dark"]
                    implicitWidth: 220
                    model: [qsTr("As the system"), qsTr("Light"), qsTr("Dark")]
                    currentIndex: values.indexOf(desk.settings.theme)
                    onActivated: desk.settings.theme = values[index]
                    Accessible.name: qsTr("Colours")
                }
                PlainText { text: qsTr("Language"); color: Theme.text; font.pixelSize: Theme.textSize }
                DropDown {
                    id: language
                    objectName: "languageChoice"
                    readonly property var values: [""].concat(desk.settings.languages.map(function(one) { return one.code; }))
                    implicitWidth: 220
                    model: [qsTr("As the system")].concat(desk.settings.languages.map(function(one) { return one.name; }))
                    currentIndex: values.indexOf(desk.settings.language)
                    onActivated: desk.settings.language = values[index]
                    Accessible.name: qsTr("Language")
                }
            }
            QuietText {
                Layout.fillWidth: true
                Layout.topMargin: 10
                text: qsTr("Keys: Ctrl and a number for each page, space bar talk while held, Ctrl+T talk on and off, Ctrl+M mute, Ctrl+F search, Ctrl+N new, Enter open, Delete delete.")
            }
        }
    }
}
