import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import QtQuick.Window 2.15
import VoiceDesk 1.0
import "."

// Whom to talk to on the left, the talk on the right.
DeskPage {
    id: root
    readonly property TalkControl talk: desk.talk
    readonly property bool talking: talk.phase === TalkControl.Talking

    hasTalkKey: true
    function focusSearch() { search.forceActiveFocus(); }
    function clock(seconds) {
        const minutes = Math.floor(seconds / 60);
        const rest = seconds % 60;
        return minutes + ":" + (rest < 10 ? "0" : "") + rest;
    }

    // The server is asked for pictures only while somebody can see them.
    readonly property bool looking: visible && Window.window !== null && Window.visibility !== Window.Hidden && Window.visibility !== Window.Minimized
    Binding { target: desk.view; property: "active"; value: root.looking }
    Binding { target: desk.view; property: "camera"; value: desk.targets.chosenCamera }

    // The cursor belongs to a target, wherever its row goes; without its target there is none.
    Connections {
        target: desk.targets
        property string cursor
        function onAboutToRearrange() { cursor = desk.targets.keyAt(targets.list.currentIndex); }
        function onRearranged() { targets.list.currentIndex = desk.targets.rowOf(cursor); }
    }

    RowLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        spacing: 20

        ColumnLayout {
            Layout.fillHeight: true
            Layout.preferredWidth: 380
            Layout.minimumWidth: 290
            Layout.maximumWidth: 460
            Layout.fillWidth: true
            spacing: 10

            SearchField {
                id: search
                objectName: "targetSearch"
                Layout.fillWidth: true
                placeholderText: qsTr("Search cameras and speakers")
                onTextChanged: desk.targets.search = text
                Keys.onDownPressed: targets.list.forceActiveFocus()
            }
            ListFrame {
                id: targets
                objectName: "targets"
                Layout.fillWidth: true
                Layout.fillHeight: true
                name: qsTr("Cameras and speakers")
                model: desk.targets
                list.section.property: "kind"
                list.section.delegate: PlainText {
                    width: ListView.view.width
                    leftPadding: 10
                    topPadding: 8
                    bottomPadding: 4
                    text: section === "camera" ? qsTr("Cameras") : qsTr("Speakers")
                    color: Theme.quiet
                    font { pixelSize: Theme.smallSize; weight: Font.DemiBold }
                }
                onOpenRequested: function(entry) { entry.toggle(); }
                delegate: TargetRow { locked: root.talk.phase !== TalkControl.Idle }
                EmptyHint {
                    anchors.centerIn: parent
                    visible: targets.count === 0
                    title: search.text !== "" ? qsTr("Nothing is found.") : qsTr("No cameras and no speakers yet.")
                    hint: search.text !== "" ? qsTr("Names and addresses are searched.") : qsTr("Add a camera on the page Cameras or a speaker on the page Speakers, or connect with another server.")
                }
            }
            CameraPicture {
                objectName: "cameraView"
                Layout.fillWidth: true
                Layout.preferredHeight: Math.round(Math.min(width * 9 / 16, root.height * 0.28)) // the list needs its room
                view: desk.view
                camera: desk.targets.chosenCameraName
            }
            QuietText {
                Layout.fillWidth: true
                text: qsTr("Enter chooses. One camera at most, any number of speakers.")
            }
        }

        ColumnLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumWidth: 300
            Layout.preferredWidth: 400
            spacing: 10

            FontMetrics { id: headingLine; font: heading.font }
            PlainText {
                id: heading
                objectName: "talkHeading"
                Layout.fillWidth: true
                Layout.preferredHeight: Math.ceil(2 * (headingLine.lineSpacing + 1)) // also for one line
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                maximumLineCount: 2
                wrapMode: Text.Wrap
                color: Theme.text
                font { pixelSize: 18; weight: Font.DemiBold }
                text: root.talking ? qsTr("Talking to %1").arg(root.talk.partners)
                    : root.talk.phase === TalkControl.Asking ? qsTr("Calling %1…").arg(desk.targets.chosenNames)
                    : desk.targets.chosenCount > 0 ? desk.targets.chosenNames : qsTr("Choose whom to talk to")
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            PlainText {
                objectName: "talkClock"
                Layout.alignment: Qt.AlignHCenter
                text: root.talking ? root.clock(root.talk.seconds) : "–"
                color: root.talking ? Theme.text : Theme.quiet
                font { pixelSize: 30; family: "monospace" }
                Accessible.role: Accessible.StaticText
                Accessible.name: root.talking ? qsTr("Talking for %1").arg(text) : qsTr("No talk")
            }

            Item {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.minimumHeight: 104
                Layout.maximumHeight: 168
                Layout.preferredHeight: 168
                AbstractButton {
                    id: button
                    objectName: "talkButton"
                    anchors.centerIn: parent
                    width: parent.height
                    height: parent.height
                    text: root.talking ? qsTr("End") : root.talk.phase === TalkControl.Asking ? qsTr("Cancel") : qsTr("Talk")
                    Accessible.name: root.talking ? qsTr("End the talk") : text
                    Accessible.description: qsTr("Or hold the space bar")
                    onClicked: root.talk.toggle()
                    Keys.onReturnPressed: root.talk.toggle()
                    background: Rectangle {
                        radius: width / 2
                        color: root.talking ? Theme.live : button.pressed ? Qt.darker(Theme.accent, 1.2) : Theme.accent
                        opacity: root.talk.phase === TalkControl.Asking ? 0.6 : 1
                        border.width: button.visualFocus ? 4 : 0
                        border.color: Theme.text
                    }
                    contentItem: PlainText {
                        text: button.text
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        color: root.talking ? "#ffffff" : Theme.accentText
                        font { pixelSize: 26; weight: Font.Bold }
                    }
                }
            }
            // One place for the hint and the sign: nothing below moves under a pointer.
            Item {
                Layout.fillWidth: true
                implicitHeight: 44
                QuietText {
                    objectName: "talkHint"
                    anchors.verticalCenter: parent.verticalCenter
                    width: parent.width
                    visible: !root.talk.muted
                    horizontalAlignment: Text.AlignHCenter
                    font.pixelSize: Theme.textSize
                    text: root.talk.whileHeld ? qsTr("Talking while you hold the space bar")
                        : root.talking ? qsTr("Press the button to end the talk")
                        : root.talk.phase === TalkControl.Asking ? qsTr("Nobody hears you yet")
                        : search.activeFocus ? qsTr("Press the button to talk")
                        : qsTr("Hold the space bar to talk, or press the button")
                }
                Rectangle {
                    objectName: "mutedSign"
                    anchors.fill: parent
                    visible: root.talk.muted
                    radius: Theme.radius
                    color: Theme.live
                    PlainText {
                        anchors.centerIn: parent
                        width: parent.width - 16
                        horizontalAlignment: Text.AlignHCenter
                        fontSizeMode: Text.HorizontalFit
                        text: qsTr("MICROPHONE MUTED – nobody hears you")
                        color: "#ffffff"
                        font { pixelSize: 16; weight: Font.Bold }
                        Accessible.role: Accessible.AlertMessage
                        Accessible.name: text
                    }
                }
            }

            TextMetrics { id: muteWidth; font: mute.font; text: qsTr("Mute") }
            TextMetrics { id: unmuteWidth; font: mute.font; text: qsTr("Unmute") }
            GridLayout {
                Layout.fillWidth: true
                columns: 3
                columnSpacing: 12
                rowSpacing: 10

                PlainText { text: qsTr("Microphone"); color: Theme.text; font.pixelSize: Theme.textSize }
                LevelMeter {
                    objectName: "capturedMeter"
                    Layout.fillWidth: true
                    name: qsTr("Level of the microphone")
                    level: root.talk.muted ? 0 : desk.meters.captured
                }
                ActionButton {
                    id: mute
                    objectName: "muteButton"
                    Layout.minimumWidth: Math.ceil(Math.max(muteWidth.advanceWidth, unmuteWidth.advanceWidth)) + leftPadding + rightPadding
                    checkable: true
                    checked: root.talk.muted
                    text: checked ? qsTr("Unmute") : qsTr("Mute")
                    Accessible.name: qsTr("Mute the microphone")
                    onClicked: {
                        root.talk.muted = checked;
                        checked = Qt.binding(function() { return root.talk.muted; });
                    }
                    ToolTip.visible: hovered
                    ToolTip.delay: 600
                    ToolTip.text: "Ctrl+M"
                }
                PlainText { text: qsTr("Volume"); color: Theme.text; font.pixelSize: Theme.textSize }
                Slider {
                    id: volume
                    objectName: "volumeSlider"
                    Layout.fillWidth: true
                    from: 0
                    to: 100
                    stepSize: 5
                    value: root.talk.volume
                    Accessible.name: qsTr("Volume of the microphone")
                    onMoved: root.talk.volume = value
                }
                PlainText { text: qsTr("%1 %").arg(Math.round(volume.value)); color: Theme.text; font.pixelSize: Theme.textSize; Layout.minimumWidth: 50 }
                PlainText { text: qsTr("Heard"); color: Theme.text; font.pixelSize: Theme.textSize }
                LevelMeter {
                    objectName: "receivedMeter"
                    Layout.fillWidth: true
                    Layout.columnSpan: 2
                    name: qsTr("Level of what is heard")
                    level: desk.meters.received
                }
            }

            Rectangle {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.minimumHeight: 84
                Layout.maximumHeight: 260
                color: Theme.surface
                radius: Theme.radius
                border.color: Theme.border
                ColumnLayout {
                    anchors { fill: parent; margins: 8 }
                    spacing: 2
                    QuietText { text: qsTr("Said, the last ten seconds") }
                    Waveform {
                        Layout.fillWidth: true
                        Layout.fillHeight: true
                        meters: desk.meters
                        direction: TalkMeters.Captured
                        color: Theme.accent
                    }
                    QuietText { text: qsTr("Heard") }
                    Waveform {
                        Layout.fillWidth: true
                        Layout.fillHeight: true
                        meters: desk.meters
                        direction: TalkMeters.Received
                        color: Theme.good
                    }
                }
            }
            Item { Layout.fillHeight: true; Layout.preferredHeight: 1 }
        }
    }
}
