import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// A date and a time of day, as ISO 8601 without an offset.
RowLayout {
    id: root
    property string name
    readonly property bool valid: !isNaN(Date.fromLocaleString(Qt.locale("C"), day.text + " " + time.text, "yyyy-MM-dd hh:mm").getTime())
    // Empty while the texts are not a date and time.
    readonly property string value: valid ? day.text + "T" + time.text + ":00" : ""
    spacing: 8

    function show(moment) {
        day.text = moment.substring(0, 10);
        time.text = moment.substring(11, 16);
    }

    TextField {
        id: day
        implicitWidth: 130
        selectByMouse: true
        placeholderText: "2026-12-31"
        Accessible.name: qsTr("%1: day, like 2026-12-31").arg(root.name)
        background: FieldFrame { active: day.activeFocus; wrong: !root.valid }
    }
    TextField {
        id: time
        implicitWidth: 80
        selectByMouse: true
        placeholderText: "08:30"
        Accessible.name: qsTr("%1: time, like 08:30").arg(root.name)
        background: FieldFrame { active: time.activeFocus; wrong: !root.valid }
    }
    Item { Layout.fillWidth: true }
}
