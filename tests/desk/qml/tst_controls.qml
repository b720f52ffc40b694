import QtQuick 2.15
import QtTest 1.15
import "qrc:/desk"

Item {
    width: 500
    height: 500

    ChoiceBar {
        id: choice
        choices: ["One", "Two", "Three"]
    }
    LevelMeter {
        id: meter
        y: 50
        width: 100
        name: "Level"
    }
    Banner {
        id: banner
        y: 80
        width: 400
        title: "It broke."
        detail: "Mend it."
        action: "Mend"
    }
    ListModel {
        id: entries
        ListElement { entryId: 1; entryName: "Hall" }
        ListElement { entryId: 12; entryName: "Stairs" }
    }
    CheckList {
        id: list
        y: 200
        width: 300
        height: 200
        label: "Speakers"
        model: entries
        idName: "entryId"
        nameName: "entryName"
        emptyText: "None."
    }
    PendingRequest { id: request }
    SignalSpy { id: dismissed; target: banner; signalName: "dismissed" }
    SignalSpy { id: triggered; target: banner; signalName: "triggered" }
    SignalSpy { id: edited; target: list; signalName: "edited" }
    SignalSpy { id: succeeded; target: request; signalName: "succeeded" }

    TestCase {
        name: "Controls"
        when: windowShown

        function find(item, text) {
            for (let i = 0; i < item.children.length; ++i) {
                const child = item.children[i];
                if (child.text === text && child.clicked)
                    return child;
                const found = find(child, text);
                if (found)
                    return found;
            }
            return null;
        }

        function test_choice() {
            compare(choice.currentIndex, 0);
            mouseClick(find(choice, "Two"));
            compare(choice.currentIndex, 1);
            keyClick(Qt.Key_Right);
            compare(choice.currentIndex, 2);
            keyClick(Qt.Key_Right); // there is no further one
            compare(choice.currentIndex, 2);
            keyClick(Qt.Key_Left);
            compare(choice.currentIndex, 1);
        }

        function test_meter_data() {
            return [{ tag: "nothing", level: 0, share: 0 }, { tag: "half", level: 0.5, share: 0.5 },
                    { tag: "full", level: 1, share: 1 }, { tag: "too much", level: 3, share: 1 }, { tag: "negative", level: -1, share: 0 }];
        }
        function test_meter(row) {
            meter.level = row.level;
            compare(meter.children[0].width, 96 * row.share);
        }

        function test_banner() {
            dismissed.clear();
            triggered.clear();
            mouseClick(find(banner, "Mend"));
            compare(triggered.count, 1);
            mouseClick(find(banner, "Close"));
            compare(dismissed.count, 1);
            banner.dismissable = false;
            verify(!find(banner, "Close").visible);
        }

        function test_checkList() {
            edited.clear();
            list.checkedIds = [12];
            mouseClick(find(list, "Hall"));
            compare(list.checkedIds, [12, 1]);
            mouseClick(find(list, "Stairs"));
            compare(list.checkedIds, [1]);
            compare(edited.count, 2);
            // What is set from outside shows, also after clicks.
            list.checkedIds = [12];
            verify(find(list, "Stairs").checked);
            verify(!find(list, "Hall").checked);
            // By keys: the space bar switches where the arrows have gone.
            keyClick(Qt.Key_Up);
            keyClick(Qt.Key_Space);
            compare(list.checkedIds.length, 2);
        }

        function test_request() {
            succeeded.clear();
            let number = desk.send();
            request.begin(true);
            verify(request.busy);
            desk.answer(number + 1000);
            request.answer(true, "0", 7); // of another request
            verify(request.busy);
            desk.answer(number);
            request.answer(true, "0", 7);
            verify(!request.busy);
            compare(succeeded.count, 1);
            compare(succeeded.signalArguments[0][0], 7);
            request.answer(true, "0", 8); // nobody waits
            compare(succeeded.count, 1);

            number = desk.send();
            request.begin(true);
            desk.answer(number);
            request.answer(false, "412", 0);
            verify(request.problem.indexOf("412") >= 0);
            compare(succeeded.count, 1);

            request.begin(false);
            verify(!request.busy);
            verify(request.problem.indexOf("connection") >= 0);

            desk.send();
            number = desk.send();
            request.begin(true);
            desk.answer(number);
            desk.loseAll(); // of the other one
            verify(request.busy);
            desk.send();
            request.begin(true);
            desk.loseAll();
            verify(!request.busy);
            verify(request.problem.indexOf("did not answer") >= 0);
            request.reset();
            compare(request.problem, "");

            // An answer that comes after all.
            succeeded.clear();
            number = desk.send();
            request.begin(true);
            desk.loseAll();
            desk.answer(number + 1000);
            request.answer(true, "0", 9); // of another request
            compare(succeeded.count, 0);
            desk.answer(number);
            request.answer(true, "0", 9);
            compare(succeeded.count, 1);
            compare(request.problem, "");
            request.answer(true, "0", 9); // once
            compare(succeeded.count, 1);
            number = desk.send();
            request.begin(true);
            desk.loseAll();
            request.reset(); // the dialog was opened for something else
            desk.answer(number);
            request.answer(true, "0", 9);
            compare(succeeded.count, 1);
        }
    }
}
