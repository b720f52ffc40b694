import QtQuick 2.15
import QtTest 1.15
import "qrc:/desk"

Item {
    width: 400
    height: 300

    FormField {
        id: port
        width: 200
        label: "Port"
        problem: /^[0-9]+$/.test(text) ? "" : "A number."
    }
    SearchField {
        id: search
        y: 100
        width: 200
        placeholderText: "Search"
    }
    MomentField {
        id: moment
        y: 150
        width: 300
        name: "Start"
    }
    SignalSpy { id: edited; target: port; signalName: "edited" }

    TestCase {
        name: "Fields"
        when: windowShown

        function hintOf(field) { return field.children[2]; }

        function test_problemIsToldAfterTheFirstLetter() {
            port.text = "";
            port.touched = false;
            verify(!port.valid);
            verify(!hintOf(port).visible); // nobody has done anything wrong yet
            mouseClick(port.field);
            keyClick("x");
            verify(hintOf(port).visible);
            compare(hintOf(port).text, "A number.");
            compare(edited.count, 1);
            keyClick(Qt.Key_Backspace);
            keyClick("8");
            verify(port.valid);
            verify(!hintOf(port).visible);
        }

        function test_escapeEmptiesASearch() {
            mouseClick(search);
            keyClick("a");
            keyClick("b");
            compare(search.text, "ab");
            keyClick(Qt.Key_Escape);
            compare(search.text, "");
        }

        function test_clearButton() {
            search.text = "abc";
            mouseClick(search, search.width - 10, search.height / 2);
            compare(search.text, "");
            verify(search.activeFocus);
        }

        function test_moments_data() {
            return [
                { tag: "good", text: "2026-03-01", time: "08:30", valid: true },
                { tag: "leap day", text: "2028-02-29", time: "00:00", valid: true },
                { tag: "no such day", text: "2026-02-30", time: "08:30", valid: false },
                { tag: "no such hour", text: "2026-02-03", time: "25:00", valid: false },
                { tag: "nothing", text: "", time: "", valid: false },
                { tag: "words", text: "tomorrow", time: "noon", valid: false }
            ];
        }
        function write(field, text) {
            mouseClick(field);
            keyClick(Qt.Key_A, Qt.ControlModifier);
            for (let i = 0; i < text.length; ++i)
                keyClick(text[i]);
            if (text === "")
                keyClick(Qt.Key_Delete);
            compare(field.text, text);
        }
        function test_moments(row) {
            moment.show("2026-01-01T00:00:00");
            compare(moment.value, "2026-01-01T00:00:00");
            write(moment.children[0], row.text);
            write(moment.children[1], row.time);
            compare(moment.valid, row.valid);
            compare(moment.value, row.valid ? row.text + "T" + row.time + ":00" : "");
        }
        function test_correctedMoment() {
            moment.show("2026-11-22T08:30:00");
            mouseClick(moment.children[0]);
            keyClick(Qt.Key_End);
            keyClick(Qt.Key_Backspace);
            compare(moment.valid, false);
            keyClick("9");
            compare(moment.value, "2026-11-29T08:30:00");
            mouseClick(moment.children[1]);
            keyClick(Qt.Key_End);
            keyClick(Qt.Key_Backspace);
            keyClick("5");
            compare(moment.value, "2026-11-29T08:35:00");
        }
        function test_shownMomentReplacesAWrongOne() {
            moment.show("2026-11-22T08:30:00");
            write(moment.children[0], "soon");
            moment.show("2026-11-22T08:30:00");
            compare(moment.value, "2026-11-22T08:30:00");
        }
    }
}
