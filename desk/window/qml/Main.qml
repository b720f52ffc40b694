import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

ApplicationWindow {
    id: root
    width: 1160
    height: 760
    minimumWidth: 860
    minimumHeight: 600
    visible: true
    title: talk.phase === TalkControl.Talking ? qsTr("Talking to %1 – VoiceDesk").arg(talk.partners) : qsTr("VoiceDesk")

    readonly property var talk: desk.talk
    readonly property var connection: desk.connection
    readonly property var pageNames: [qsTr("Talk"), qsTr("Speakers"), qsTr("Audio files"), qsTr("Groups"), qsTr("Schedules"), qsTr("Connection")]
    property alias page: pages.currentIndex

    color: Theme.window
    palette {
        window: Theme.window
        windowText: Theme.text
        base: Theme.surface
        alternateBase: Theme.raised
        text: Theme.text
        button: Theme.raised
        buttonText: Theme.text
        highlight: Theme.accent
        highlightedText: Theme.accentText
        mid: Theme.border
        dark: Theme.quiet
        light: Theme.surface
        midlight: Theme.border
        shadow: Theme.border
        brightText: Theme.text
        toolTipBase: Theme.raised
        toolTipText: Theme.text
        link: Theme.accent
    }
    font.pixelSize: Theme.textSize

    Binding { target: Theme; property: "dark"; value: desk.settings.dark }
    Binding { target: talkKey; property: "enabled"; value: root.page === 0 }

    Shortcut { sequence: "Ctrl+1"; onActivated: root.page = 0 }
    Shortcut { sequence: "Ctrl+2"; onActivated: root.page = 1 }
    Shortcut { sequence: "Ctrl+3"; onActivated: root.page = 2 }
    Shortcut { sequence: "Ctrl+4"; onActivated: root.page = 3 }
    Shortcut { sequence: "Ctrl+5"; onActivated: root.page = 4 }
    Shortcut { sequence: "Ctrl+6"; onActivated: root.page = 5 }
    Shortcut { sequence: "Ctrl+M"; onActivated: root.talk.muted = !root.talk.muted }
    Shortcut { sequence: "Ctrl+T"; onActivated: root.talk.toggle() }
    Shortcut { sequence: StandardKey.Find; onActivated: pages.children[root.page].focusSearch() }
    Shortcut { sequence: StandardKey.New; onActivated: pages.children[root.page].addNew() }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Banner {
            Layout.fillWidth: true
            visible: !root.connection.online && root.connection.state !== DeskConnection.Connecting
            severe: true
            dismissable: false
            title: root.connection.stateText
            detail: qsTr("%1: %2").arg(root.connection.server).arg(root.connection.reason)
            action: qsTr("Connection…")
            onTriggered: root.page = 5
        }
        Banner {
            Layout.fillWidth: true
            visible: desk.watch.overdue && root.connection.online
            title: qsTr("The server does not answer.")
            detail: qsTr("What was asked last may or may not have been done. Look at the list before you try again.")
            onDismissed: desk.watch.dismiss()
        }
        Banner {
            Layout.fillWidth: true
            visible: root.talk.problem !== ""
            title: root.talk.problem
            detail: root.talk.advice
            onDismissed: root.talk.dismissProblem()
        }
        Banner {
            id: playFailure
            Layout.fillWidth: true
            visible: title !== ""
            onDismissed: title = ""
            Connections {
                target: desk.playback
                function onFailed(text) { playFailure.title = text; }
            }
        }
        // On the air: on every page, wherever the operator has gone meanwhile.
        Rectangle {
            Layout.fillWidth: true
            visible: root.talk.phase === TalkControl.Talking && root.page !== 0
            color: root.talk.muted ? Theme.warning : Theme.live
            implicitHeight: 40
            RowLayout {
                anchors { fill: parent; leftMargin: 16; rightMargin: 8 }
                PlainText {
                    Layout.fillWidth: true
                    elide: Text.ElideRight
                    text: root.talk.muted ? qsTr("Talking to %1, but the microphone is muted").arg(root.talk.partners)
                                          : qsTr("Talking to %1").arg(root.talk.partners)
                    color: root.talk.muted ? Theme.warningText : "#ffffff"
                    font { pixelSize: Theme.textSize; weight: Font.DemiBold }
                }
                ActionButton { text: qsTr("End the talk"); onClicked: root.talk.stop() }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: 0

            Rectangle {
                Layout.fillHeight: true
                implicitWidth: rail.implicitWidth + 24
                color: Theme.surface
                ColumnLayout {
                    id: rail
                    anchors { fill: parent; margins: 12 }
                    spacing: 4
                    PlainText {
                        Layout.bottomMargin: 12
                        Layout.leftMargin: 8
                        text: "VoiceDesk"
                        color: Theme.text
                        font { pixelSize: 18; weight: Font.Bold }
                    }
                    Repeater {
                        model: root.pageNames
                        NavButton {
                            Layout.fillWidth: true
                            text: modelData
                            shortcut: "Ctrl+" + (index + 1)
                            checked: root.page === index
                            onClicked: root.page = index
                        }
                    }
                    Item { Layout.fillHeight: true }
                    RowLayout {
                        Layout.leftMargin: 8
                        spacing: 8
                        Rectangle {
                            width: 10
                            height: 10
                            radius: 5
                            color: root.connection.online ? Theme.good : Theme.bad
                        }
                        QuietText {
                            Layout.fillWidth: true
                            Layout.maximumWidth: 140
                            text: root.connection.stateText
                        }
                    }
                }
                Rectangle { anchors.right: parent.right; height: parent.height; width: 1; color: Theme.border }
            }

            StackLayout {
                id: pages
                objectName: "pages"
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.margins: 20
                TalkPage { }
                SpeakersPage { }
                FilesPage { }
                GroupsPage { }
                SchedulesPage { }
                ConnectionPage { }
            }
        }
    }
}
