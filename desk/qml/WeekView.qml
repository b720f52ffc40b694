import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// The runs of a week, a column a day.
ColumnLayout {
    id: root
    property ScheduleModel schedules
    property int revision: 0
    property date monday: desk.schedules.mondayOf(new Date())
    readonly property var runs: revision >= 0 && visible ? desk.schedules.week(schedules, monday) : []
    signal chosen(int row)
    spacing: 8

    function dayAt(offset) {
        const day = new Date(monday);
        day.setDate(day.getDate() + offset);
        return day;
    }
    function isToday(day) {
        return day.toDateString() === new Date().toDateString();
    }

    RowLayout {
        Layout.fillWidth: true
        ActionButton { text: qsTr("‹ Earlier"); onClicked: root.monday = root.dayAt(-7) }
        ActionButton { text: qsTr("This week"); onClicked: root.monday = desk.schedules.mondayOf(new Date()) }
        ActionButton { text: qsTr("Later ›"); onClicked: root.monday = root.dayAt(7) }
        PlainText {
            Layout.leftMargin: 10
            text: qsTr("%1 to %2").arg(Qt.formatDate(root.monday, Qt.DefaultLocaleShortDate)).arg(Qt.formatDate(root.dayAt(6), Qt.DefaultLocaleShortDate))
            color: Theme.text
            font.pixelSize: Theme.textSize
        }
    }
    RowLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        spacing: 6
        Repeater {
            model: 7
            Rectangle {
                id: day
                readonly property date date: root.dayAt(index)
                readonly property var runsOfDay: root.runs.filter(function(run) { return run.day === index; })
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                color: Theme.surface
                radius: Theme.radius
                border.color: root.isToday(date) ? Theme.accent : Theme.border
                border.width: root.isToday(date) ? 2 : 1
                ColumnLayout {
                    anchors { fill: parent; margins: 6 }
                    spacing: 4
                    PlainText {
                        Layout.fillWidth: true
                        horizontalAlignment: Text.AlignHCenter
                        text: Qt.formatDate(day.date, "ddd d")
                        color: Theme.text
                        font { pixelSize: Theme.textSize; weight: Font.DemiBold }
                    }
                    ListView {
                        Layout.fillWidth: true
                        Layout.fillHeight: true
                        clip: true
                        spacing: 4
                        model: day.runsOfDay
                        boundsBehavior: Flickable.StopAtBounds
                        delegate: AbstractButton {
                            id: run
                            width: ListView.view.width
                            implicitHeight: 44
                            opacity: modelData.enabled ? 1 : 0.55
                            Accessible.name: modelData.name + ", " + time.text
                            onClicked: root.chosen(modelData.row)
                            Keys.onReturnPressed: root.chosen(modelData.row)
                            background: Rectangle {
                                radius: 4
                                color: Theme.raised
                                border.width: run.visualFocus ? 2 : 0
                                border.color: Theme.accent
                                Rectangle { width: 3; height: parent.height; radius: 2; color: modelData.enabled ? Theme.accent : Theme.quiet }
                            }
                            contentItem: Column {
                                leftPadding: 6
                                PlainText {
                                    id: time
                                    text: Qt.formatTime(new Date(2000, 0, 1, Math.floor(modelData.minute / 60), modelData.minute % 60), Qt.DefaultLocaleShortDate)
                                    color: Theme.quiet
                                    font.pixelSize: Theme.smallSize
                                }
                                PlainText {
                                    width: run.width - 14
                                    text: modelData.name
                                    elide: Text.ElideRight
                                    color: Theme.text
                                    font.pixelSize: Theme.smallSize
                                }
                            }
                        }
                    }
                }
            }
        }
    }
}
