import QtQuick 2.15
import QtQuick.Layouts 1.15

// What every page is: its content, one below the other, and what the window asks of it.
Item {
    id: root
    default property alias content: column.data
    property alias spacing: column.spacing
    property bool hasTalkKey: false // the space bar is the talk key on this page
    property string problem // shown above whichever page is open; empty again when a person has closed it
    property FormDialog editor: null // the dialog for a new record; has create()

    // Moves the focus to the search; Ctrl+F.
    function focusSearch() { }
    // Starts a new record; Ctrl+N.
    function addNew() {
        if (editor)
            editor.create();
    }

    ColumnLayout {
        id: column
        anchors.fill: parent
        spacing: 12
    }
}
