pragma Singleton
import QtQuick 2.15
import "."

// The pages of the window, from the top of the rail. Ctrl and its number open each of the first nine.
QtObject {
    id: root
    readonly property list<PageEntry> list: [
        PageEntry { name: "talk"; title: qsTr("Talk"); file: "TalkPage.qml" },
        PageEntry { name: "cameras"; title: qsTr("Cameras"); file: "CamerasPage.qml" },
        PageEntry { name: "speakers"; title: qsTr("Speakers"); file: "SpeakersPage.qml" },
        PageEntry { name: "files"; title: qsTr("Audio files"); file: "FilesPage.qml" },
        PageEntry { name: "groups"; title: qsTr("Groups"); file: "GroupsPage.qml" },
        PageEntry { name: "schedules"; title: qsTr("Schedules"); file: "SchedulesPage.qml" },
        PageEntry { name: "connection"; title: qsTr("Connection"); file: "ConnectionPage.qml" }
    ]

    // The place of a page in the list; -1 for a name that none has.
    function indexOf(name) {
        for (let i = 0; i < list.length; ++i) {
            if (list[i].name === name)
                return i;
        }
        return -1;
    }
    // The names of all pages, in their order.
    function names() {
        const all = [];
        for (let i = 0; i < list.length; ++i)
            all.push(list[i].name);
        return all;
    }
    // The keys that open a page; empty for a page that has none.
    function keys(index) {
        return index < 9 ? "Ctrl+" + (index + 1) : "";
    }
}
