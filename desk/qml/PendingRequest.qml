import QtQuick 2.15

// A request on its way: its answer, its refusal or its silence.
QtObject {
    id: root
    property bool busy: false
    property bool overdue: false // it was given up, but an answer may come after all
    property string problem
    property bool serversWords: false // whether a refusal is also shown in the server's own words
    property double number: 0 // of the request that is waited for
    signal succeeded(int id)

    // After a call of the plug-in that sends the request, and whether that was accepted.
    function begin(accepted) {
        number = desk.watch.lastSent();
        problem = accepted ? "" : qsTr("There is no connection to the server.");
        busy = accepted;
        overdue = false;
    }
    function answer(success, code, id) {
        if ((!busy && !overdue) || desk.watch.lastAnswered() !== number)
            return;
        busy = false;
        overdue = false;
        problem = success ? "" : qsTr("Not done: %1.").arg(serversWords ? desk.fullWords(code, desk.watch.errorText()) : desk.words(code, desk.watch.errorText()));
        if (success)
            succeeded(id);
    }
    function reset() {
        busy = false;
        overdue = false;
        problem = "";
    }

    property Connections watcher: Connections {
        target: desk.watch
        function onTimedOut(request) {
            if (root.busy && request === root.number) {
                root.busy = false;
                root.overdue = true;
                root.problem = qsTr("The server did not answer. Nobody knows whether it was done: look at the list before you try again.");
            }
        }
    }
}
