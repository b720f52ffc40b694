// The window at twice the size, dark and in another language, and by the keyboard alone.

#include "system/ProgramEnd.h"
#include "tests/desk/FocusLook.h"
#include "tests/desk/QmlComplaints.h"
#include "tests/desk/WindowFixture.h"
#include "tests/server/SilentServer.h"

class TestDeskLook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void everyPageIsListed();
    void nothingIsCut_data();
    void nothingIsCut();
    void dark();
    void languageChangesAtOnce();
    void keyboardAlone();
    void focusIsVisible_data();
    void focusIsVisible();
    void everythingHasAName();
    void nothingMovesUnderThePointer_data();
    void nothingMovesUnderThePointer();
    void noticesAreNotCut_data();
    void noticesAreNotCut();

private:
    std::unique_ptr<PulseServer> m_pulse;
};

namespace {

void fillWithRecords(WindowFixture& desk)
{
    QObject* plugin = desk.desk().plugin();
    const auto add = [&](const char* name, const char* address) {
        bool accepted = false;
        QMetaObject::invokeMethod(plugin, "addIPAudio", Q_RETURN_ARG(bool, accepted), Q_ARG(QString, name),
                                  Q_ARG(QString, address), Q_ARG(int, 8080), Q_ARG(QString, "admin"),
                                  Q_ARG(QString, "secret"), Q_ARG(QStringList, {"camera-1"}));
        QVERIFY(accepted);
    };
    add("Entrance hall", "10.20.30.41");
    add("Loading dock, north side", "10.20.30.42");
    add("Car park", "speakers.example.org");
    QTRY_COMPARE(desk.desk().targets()->total(), 6);
    bool accepted = false;
    QMetaObject::invokeMethod(plugin, "addNetworkAudioGroup", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(QString, "Outdoors"), Q_ARG(QVariant, QVariantList({2, 3})));
    QVERIFY(accepted);
    QMetaObject::invokeMethod(plugin, "uploadFile", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(QUrl, QUrl::fromLocalFile(ANNOUNCEMENT_WAV)));
    QVERIFY(accepted);
    QTRY_COMPARE(plugin->property("audioFileList").toList().value(0).toMap()["audioID"].toInt(), 1);
    const QVariantMap schedule{{"scheduleName", "Closing time"},
                               {"enableSchedule", true},
                               {"scheduleType", 2},
                               {"scheduleSettings", QVariantMap{{"weekdays", QVariantList{1, 2, 3, 4, 5}}}},
                               {"scheduleStartTime", "2026-01-01T17:45:00"},
                               {"scheduleEndTime", ""},
                               {"enableScheduleEndTime", false},
                               {"audioID", 1},
                               {"groupIDList", QVariantList{1}},
                               {"networkAudioIDList", QVariantList{1}}};
    QMetaObject::invokeMethod(plugin, "addNetworkAudioSchedule", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(QVariantMap, schedule));
    QVERIFY(accepted);
    // Until the lists have what was added, their rows may still come.
    QObject owner;
    const GroupModel* groups = desk.desk().plugin()->getNetworkAudioGroupModel(&owner);
    const ScheduleModel* schedules = desk.desk().plugin()->getNetworkAudioScheduleModel(&owner);
    QTRY_COMPARE(groups->rowCount(), 1);
    QTRY_COMPARE(schedules->rowCount(), 1);
}

/** What a control is called in a failure. */
QString nameOf(const QQuickItem* item)
{
    QString text;
    QDebug(&text).nospace() << item << " " << item->property("text").toString();
    return text;
}

QString nameOf(const QRectF& place)
{
    QString text;
    QDebug(&text) << place;
    return text;
}

/** The control that Tab has reached: the focus itself, or the list that it is a row of; null for neither. */
QQuickItem* tabStop(QQuickItem* focused)
{
    while (focused != nullptr && !focused->activeFocusOnTab()) {
        focused = focused->parentItem();
    }
    return focused;
}

/** Goes through all controls by Tab, and looks for the ring of each. */
void lookAtRings(WindowFixture& desk, const QString& place)
{
    constexpr int most = 100;
    QSet<QQuickItem*> seen;
    QVERIFY(desk.settled());
    FocusLook before(*desk.window());
    for (;;) {
        desk.key(Qt::Key_Tab);
        QVERIFY(desk.settled());
        QQuickItem* control = tabStop(desk.window()->activeFocusItem());
        QVERIFY2(control != nullptr, qPrintable(place));
        if (seen.contains(control)) {
            break;
        }
        seen.insert(control);
        QVERIFY(seen.size() < most);
        FocusLook now(*desk.window());
        QVERIFY2(now.hasRing(*control, before), qPrintable(place + ": " + nameOf(control)));
        before = std::move(now);
    }
    // Tab has come to all: to those of the dialog if one is open, else to the rail and the page.
    const QQuickItem* layer = desk.window()->activeFocusItem();
    while (layer->parentItem() != nullptr && layer->parentItem() != desk.window()->contentItem()) {
        layer = layer->parentItem();
    }
    QStringList missed;
    desk.visit([&](QQuickItem* item) {
        if (item->activeFocusOnTab() && item->isEnabled() && layer->isAncestorOf(item) &&
            !seen.contains(item)) {
            missed.append(nameOf(item));
        }
    });
    QCOMPARE(missed.join("; "), QString());
    QVERIFY(seen.size() > 3);
}

} // namespace

void TestDeskLook::cleanup()
{
    QCOMPARE(QmlComplaints::take(), QStringList());
}

void TestDeskLook::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
}

void TestDeskLook::everyPageIsListed()
{
    WindowFixture desk;
    QStringList files = QDir(":/desk").entryList({"*Page.qml"});
    QVERIFY(files.removeOne("DeskPage.qml"));
    const QStringList pages = desk.pages();
    QCOMPARE(pages.size(), files.size());
    QCOMPARE(QSet<QString>(pages.begin(), pages.end()).size(), pages.size());
    QSet<QQuickItem*> seen;
    for (const char* language : {"en", "de"}) {
        desk.desk().settings()->setLanguage(language);
        QSet<QString> titles;
        for (const QString& page : pages) {
            desk.page(page);
            QVERIFY2(desk.openPage() != nullptr, qPrintable(page));
            QVERIFY2(desk.openPage()->isVisible(), qPrintable(page));
            seen.insert(desk.openPage());
            titles.insert(desk.item("pageTitle")->property("text").toString());
        }
        titles.remove(QString());
        QCOMPARE(titles.size(), pages.size());
    }
    QCOMPARE(seen.size(),
             pages.size()); // a change of the language keeps the pages, and what was typed on them
}

void TestDeskLook::nothingIsCut_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("theme");
    for (const QString& file : QDir(":/translations").entryList({"*.qm"})) {
        const QString code = file.section('_', 1).section('.', 0, 0);
        QTest::newRow(qPrintable(code)) << code << (code == "en" ? "light" : "dark");
    }
}

void TestDeskLook::nothingIsCut()
{
    QFETCH(QString, language);
    QFETCH(QString, theme);
    WindowFixture desk;
    fillWithRecords(desk);
    desk.desk().settings()->setLanguage(language);
    desk.desk().settings()->setTheme(theme);
    desk.window()->resize(desk.window()->minimumSize());
    for (const QString& page : desk.pages()) {
        desk.page(page);
        const QQuickItem* pages = desk.item("pages");
        QVERIFY(pages->mapToScene(QPointF(0, pages->height())).y() <= desk.window()->height());
        QCOMPARE(desk.cutTexts().join("; "), QString());
        desk.shoot(QString("%1-%2").arg(language, page));
        if (desk.openPage()->property("editor").value<QObject*>() != nullptr) {
            desk.key(Qt::Key_N, Qt::ControlModifier);
            QVERIFY(desk.item("save"));
            QVERIFY(desk.settled());
            QCOMPARE(desk.cutTexts().join("; "), QString());
            desk.shoot(QString("%1-%2-dialog").arg(language, page));
            desk.key(Qt::Key_Escape);
            QVERIFY(desk.gone("save"));
        }
    }
}

void TestDeskLook::dark()
{
    WindowFixture desk;
    const auto brightness = [&] { return desk.window()->grabWindow().pixelColor(5, 5).lightness(); };
    QVERIFY(brightness() > 200);
    desk.page("connection");
    desk.desk().settings()->setTheme("dark");
    QTRY_VERIFY(brightness() < 60);
}

void TestDeskLook::languageChangesAtOnce()
{
    WindowFixture desk;
    QVERIFY(desk.shows("Choose whom to talk to"));
    desk.desk().settings()->setLanguage("de");
    QVERIFY(desk.shows("Wählen, mit wem gesprochen wird"));
    desk.desk().settings()->setLanguage("en");
    QVERIFY(desk.shows("Choose whom to talk to"));
}

void TestDeskLook::keyboardAlone()
{
    WindowFixture desk;
    desk.page("talk");
    desk.key(Qt::Key_F, Qt::ControlModifier);
    for (const char character : {'g', 'a', 't', 'e'}) {
        QTest::keyClick(desk.window(), character);
    }
    desk.key(Qt::Key_Down);
    desk.key(Qt::Key_Return);
    QCOMPARE(desk.desk().targets()->chosenNames(), QString("Front gate"));
    desk.key(Qt::Key_T, Qt::ControlModifier);
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    desk.key(Qt::Key_M, Qt::ControlModifier);
    QVERIFY(desk.desk().talk()->isMuted());
    // The talk key lifts the mute while it is held.
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QVERIFY(!desk.desk().talk()->isMuted());
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    QVERIFY(desk.desk().talk()->isMuted());
    desk.key(Qt::Key_T, Qt::ControlModifier);
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Idle);

    // Buttons of the talk page answer to Enter, since the space bar is the talk key there.
    desk.item("muteButton")->forceActiveFocus();
    desk.key(Qt::Key_Return);
    QVERIFY(!desk.desk().talk()->isMuted());

    desk.page("speakers");
    desk.key(Qt::Key_N, Qt::ControlModifier);
    QVERIFY(desk.item("speakerDialog") || desk.item("save"));
    QTRY_VERIFY(desk.window()->activeFocusItem()->property("text").isValid());
    desk.type("Hall");
    desk.key(Qt::Key_Tab);
    desk.type("10.0.0.1");
    desk.key(Qt::Key_Return);
    QVERIFY(desk.control("Hall: edit"));
    // Through the list: Enter opens, Delete asks.
    desk.key(Qt::Key_F, Qt::ControlModifier);
    desk.key(Qt::Key_Tab);
    desk.key(Qt::Key_Tab);
    QVERIFY(desk.item("speakerList")->isAncestorOf(desk.window()->activeFocusItem()));
    desk.key(Qt::Key_Return);
    QVERIFY(desk.item("save"));
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));
    desk.key(Qt::Key_Delete);
    QVERIFY(desk.shows("This cannot be undone."));
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.control("Hall: edit"));
}

void TestDeskLook::focusIsVisible_data()
{
    QTest::addColumn<QString>("theme");
    QTest::newRow("light") << "light";
    QTest::newRow("dark") << "dark";
}

void TestDeskLook::focusIsVisible()
{
    QFETCH(QString, theme);
    WindowFixture desk;
    fillWithRecords(desk);
    desk.desk().settings()->setTheme(theme);
    for (const QString& page : desk.pages()) {
        desk.page(page);
        lookAtRings(desk, page);
        if (desk.openPage()->property("editor").value<QObject*>() != nullptr) {
            desk.key(Qt::Key_N, Qt::ControlModifier);
            QVERIFY(desk.item("save"));
            lookAtRings(desk, page + ", dialog");
            desk.key(Qt::Key_Escape);
            QVERIFY(desk.gone("save"));
        }
    }
}

void TestDeskLook::everythingHasAName()
{
    WindowFixture desk;
    fillWithRecords(desk);
    for (const QString& page : desk.pages()) {
        desk.page(page);
        QSet<QQuickItem*> seen;
        for (int tab = 0; tab < 30; ++tab) {
            desk.key(Qt::Key_Tab);
            QQuickItem* focused = desk.window()->activeFocusItem();
            if (seen.contains(focused)) {
                break;
            }
            seen.insert(focused);
            const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(focused);
            QVERIFY2(accessible != nullptr, focused->metaObject()->className());
            QVERIFY2(!accessible->text(QAccessible::Name).isEmpty(), focused->metaObject()->className());
        }
    }
}

void TestDeskLook::nothingMovesUnderThePointer_data()
{
    nothingIsCut_data();
}

void TestDeskLook::nothingMovesUnderThePointer()
{
    QFETCH(QString, language);
    QFETCH(QString, theme);
    WindowFixture desk;
    fillWithRecords(desk);
    desk.desk().settings()->setLanguage(language);
    desk.desk().settings()->setTheme(theme);
    desk.window()->resize(desk.window()->minimumSize());
    TalkControl& talk = *desk.desk().talk();
    const auto places = [&] {
        QMap<QQuickItem*, QRectF> map;
        desk.visit([&map](QQuickItem* item) {
            if (item->inherits("QQuickAbstractButton") || item->inherits("QQuickTextField") ||
                item->inherits("QQuickSlider") || item->inherits("QQuickItemView")) {
                map.insert(item, item->mapRectToScene(QRectF(0, 0, item->width(), item->height())));
            }
        });
        return map;
    };
    for (const QString& page : desk.pages()) {
        desk.page(page);
        QVERIFY(places().size() > 8); // the rail, and what is on the page
        const auto before = places();
        QMap<QQuickItem*, QString> names;
        for (auto it = before.begin(); it != before.end(); ++it) {
            names.insert(it.key(), nameOf(it.key()));
        }
        const auto compare = [&](const char* what) {
            QVERIFY(desk.settled());
            const auto now = places();
            for (auto it = before.begin(); it != before.end(); ++it) {
                // One that has gone is named as it was.
                const QString moved = QString("%1, %2: %3 was at %4, is at %5")
                                          .arg(page, what, names[it.key()], nameOf(it.value()),
                                               now.contains(it.key()) ? nameOf(now[it.key()]) : "no place");
                QVERIFY2(now.contains(it.key()) && now[it.key()] == it.value(), qPrintable(moved));
            }
        };
        talk.start(); // nobody is chosen
        QVERIFY(desk.item("notice"));
        compare("one notice");
        Q_EMIT desk.desk().playback()->failed("\"bell.wav\" was not played on Hall: the speaker is offline");
        compare("two notices");
        desk.shoot(QString("%1-%2-notices").arg(language, page));
        talk.setMuted(true);
        compare("muted");
        desk.desk().targets()->choose("camera:camera-1", true);
        desk.desk().targets()->choose("speaker:1", true);
        desk.desk().targets()->choose("speaker:2", true);
        compare("several chosen");
        talk.start();
        QTRY_COMPARE(talk.partners().count(','), 3); // one name has a comma in it
        compare("a talk, muted");
        talk.setMuted(false);
        compare("a talk");
        if (page != "talk") {
            QVERIFY(desk.item("onAir"));
            QCOMPARE(desk.cutTexts().join("; "), QString());
        }
        desk.shoot(QString("%1-%2-talk").arg(language, page));
        talk.stop();
        for (const char* key : {"camera:camera-1", "speaker:1", "speaker:2"}) {
            desk.desk().targets()->choose(key, false);
        }
        desk.click(desk.item("closeNotice"));
        QVERIFY(desk.gone("notice"));
        compare("no notice any more");
    }
}

void TestDeskLook::noticesAreNotCut_data()
{
    nothingIsCut_data();
}

void TestDeskLook::noticesAreNotCut()
{
    QFETCH(QString, language);
    QFETCH(QString, theme);
    SilentServer server;
    WindowFixture desk([&server](ClientOptions& options) {
        server.applyTo(options);
        options.timeout = 200;
    });
    desk.desk().settings()->setLanguage(language);
    desk.desk().settings()->setTheme(theme);
    desk.window()->resize(desk.window()->minimumSize());
    QVERIFY(desk.item("notice")); // the server does not answer
    const auto look = [&](const QString& picture) {
        desk.window()->grabWindow();
        QCOMPARE(desk.cutTexts().join("; "), QString());
        desk.shoot(language + "-notice-" + picture);
    };
    look("overdue");
    desk.desk().talk()->start();
    look("nobody");
    desk.desk().watch()->setTalkOpeningTime(0);
    desk.desk().targets()->setCameras(
        {QVariantMap{{"camId", "camera-1"}, {"camName", "Front gate"}, {"online", true}}});
    desk.desk().targets()->choose("camera:camera-1", true);
    desk.desk().talk()->start();
    QTRY_COMPARE_WITH_TIMEOUT(desk.desk().talk()->phase(), TalkControl::Idle, 10000);
    look("no-answer");
    server.answer("StartTalk",
                  refusal(ReturnCode::cameraBusy, "camera \"Front gate\" is in a talk with anna"));
    desk.desk().talk()->start();
    QTRY_VERIFY(desk.desk().talk()->problem().contains("in a talk with anna"));
    look("refused");
    desk.desk().connection()->useRemote("ws://127.0.0.1:1", "anna", "secret", QString());
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Reconnecting);
    look("connection");
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskLook>(argc, argv, "2"));
}

#include "tst_desklook.moc"
