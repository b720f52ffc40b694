import QtQuick 2.15
import QtTest 1.15
import "qrc:/desk"

Item {
    width: 500
    height: 500

    ToyPage {
        id: page
        anchors.fill: parent
    }

    TestCase {
        name: "ToyPage"
        when: windowShown

        function test_line() {
            const line = findChild(page, "toyLine");
            verify(line.visible && line.width > 0);
            compare(line.text, "A page to play with");
        }
    }
}
