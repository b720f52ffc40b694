import QtQuick 2.15
import "."

// The title of the page, in a room that notices are laid over, one at a time: nothing on a page moves for them.
Item {
    id: root
    property string title
    // Maps, the most urgent first: "title", and perhaps "detail", "severe", "action" with "follow", and "close".
    property var notices: []
    readonly property var notice: notices.length > 0 ? notices[0] : ({})

    implicitHeight: 64

    PageTitle {
        objectName: "pageTitle"
        anchors { left: parent.left; leftMargin: 20; verticalCenter: parent.verticalCenter }
        text: root.title
    }
    Banner {
        objectName: "notice"
        anchors.fill: parent
        visible: root.notices.length > 0
        title: root.notice.title || ""
        detail: root.notice.detail || ""
        severe: root.notice.severe === true
        action: root.notice.action || ""
        position: root.notices.length > 1 ? qsTr("%1 of %2").arg(1).arg(root.notices.length) : ""
        dismissable: root.notice.close !== undefined
        // Another notice may have taken the place of the one that was clicked.
        onTriggered: if (root.notice.follow) root.notice.follow()
        onDismissed: if (root.notice.close) root.notice.close()
    }
}
