import QtQuick 2.15

// A request on its way: its answer, its refusal or its silence.
QtObject {
    id: root
    property bool busy: false
    property string problem
    property string command
    signal succeeded(int id)

    function begin(name, accepted) {
        command = name;
        problem = accepted ? "" : qsTr("There is no connection to the server.");
        busy = accepted;
    }
    function answer(success, code, id) {
        if (!busy)
            return;
        busy = false;
        problem = success ? "" : qsTr("Not done: %1.").arg(desk.words(code, desk.watch.errorText(command)));
        if (success)
            succeeded(id);
    }
    function reset() {
        busy = false;
        problem = "";
    }

    property Connections watcher: Connections {
        target: desk.watch
        function onTimedOut(name) {
            if (root.busy && name === root.command) {
                root.busy = false;
                root.problem = qsTr("The server did not answer. Nobody knows whether it was done: look at the list before you try again.");
            }
        }
    }
}
