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

    required property TalkKey talkKey
    readonly property TalkControl talk: desk.talk
    readonly property DeskConnection connection: desk.connection
    property alias page: pages.currentIndex
    readonly property DeskPage current: pageAt(page)
    property string playFailure
    // What has to be said, the most urgent first.
    readonly property var notices: [
        {
            title: talk.problem,
            detail: talk.advice,
            close: function() { root.talk.dismissProblem(); }
        }, {
            title: connection.online || connection.state === DeskConnection.Connecting ? "" : connection.stateText,
            detail: qsTr("%1: %2").arg(connection.server).arg(connection.reason),
            severe: true,
            action: qsTr("Connection…"),
            follow: function() { root.page = Pages.indexOf("connection"); }
        }
    ].concat(pageNotices(), [
        {
            title: playFailure,
            close: function() { root.playFailure = ""; }
        }, {
            title: desk.watch.overdue && connection.online ? qsTr("The server does not answer.") : "",
            detail: qsTr("What was asked last may or may not have been done. Look at the list before you try again."),
            close: function() { desk.watch.dismiss(); }
        }
    ]).filter(function(notice) { return notice.title !== ""; })

    function pageAt(index) {
        const loader = loaders.count > index ? loaders.itemAt(index) : null;
        return loader ? loader.item : null;
    }
    function pageNotices() {
        const list = [];
        for (let i = 0; i < loaders.count; ++i) {
            const page = pageAt(i);
            if (page)
                list.push({ title: page.problem, close: function() { page.problem = ""; } });
        }
        return list;
    }

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
    // While a question is open the space bar presses its buttons; a talk that a held one opened goes on.
    Binding { target: root.talkKey; property: "enabled"; value: root.current && root.current.hasTalkKey && (!closing.visible || root.talkKey.held) }

    onPageChanged: {
        // What has the focus on the page that goes would go on taking keys, the space bar too.
        for (let item = activeFocusItem; item; item = item.parent) {
            if (item === pages) {
                current.forceActiveFocus();
                break;
            }
        }
    }
    onClosing: function(event) {
        if (talk.phase !== TalkControl.Idle) {
            event.accepted = false;
            closing.open();
        }
    }
    ConfirmDialog {
        id: closing
        objectName: "closingQuestion"
        title: qsTr("Closing during a talk")
        question: root.talk.phase === TalkControl.Talking ? qsTr("You are talking to %1. Closing the window ends the talk.").arg(root.talk.partners)
                                                          : qsTr("A talk is being opened. Closing the window gives it up.")
        action: qsTr("End the talk and close")
        keepText: qsTr("Keep talking")
        onAccepted: {
            root.talk.stop();
            root.close();
        }
        // A talk that ends meanwhile leaves nothing to ask; the window shows why it ended.
        Connections {
            target: root.talk
            function onPhaseChanged() {
                if (root.talk.phase === TalkControl.Idle)
                    closing.close();
            }
        }
    }

    Instantiator {
        model: Pages.list.length
        Shortcut { sequence: Pages.keys(index); onActivated: root.page = index }
    }
    Shortcut { sequence: "Ctrl+M"; onActivated: root.talk.muted = !root.talk.muted }
    Shortcut { sequence: "Ctrl+T"; onActivated: root.talk.toggle() }
    Shortcut { sequence: StandardKey.Find; onActivated: root.current.focusSearch() }
    Shortcut { sequence: StandardKey.New; onActivated: root.current.addNew() }

    Connections {
        target: desk.playback
        function onFailed(text) { root.playFailure = text; }
    }
    Connections {
        target: root.connection
        function onServerChanged() { root.playFailure = ""; }
    }

    RowLayout {
        anchors.fill: parent
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
                    model: Pages.list.length
                    NavButton {
                        Layout.fillWidth: true
                        text: Pages.list[index].title
                        shortcut: Pages.keys(index)
                        checked: root.page === index
                        onClicked: root.page = index
                    }
                }
                Item { Layout.fillHeight: true }
                OnAir {
                    objectName: "onAir"
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    Layout.bottomMargin: 8
                    visible: root.talk.phase === TalkControl.Talking && root.current && !root.current.hasTalkKey
                    partners: root.talk.partners
                    muted: root.talk.muted
                    onEnded: root.talk.stop()
                }
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

        ColumnLayout {
            spacing: 0
            PageHead {
                Layout.fillWidth: true
                title: Pages.list[root.page].title
                notices: root.notices
            }
            StackLayout {
                id: pages
                objectName: "pages"
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.margins: 20
                Layout.topMargin: 8
                Repeater {
                    id: loaders
                    model: Pages.list.length // a number, so that a change of the language leaves the pages as they are
                    Loader { source: Pages.list[index].file }
                }
            }
        }
    }
}
