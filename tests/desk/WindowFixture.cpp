#include "tests/desk/WindowFixture.h"

#include "tests/desk/QmlComplaints.h"
#include "tests/support/BuiltLibraries.h"

#include <QDir>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QPointer>
#include <QQmlExpression>
#include <QSignalSpy>

namespace {

constexpr int patience = 5000; // ms

} // namespace

WindowFixture::WindowFixture(const std::function<void(ClientOptions&)>& change, const QString& language)
{
    qputenv("FRAMESMITH_CAPTURE_FILE", ANNOUNCEMENT_WAV);
    QmlComplaints::watch();
    ClientOptions options;
    options.pluginPath = BuiltLibraries::path("VoiceDesk");
    options.simulated.cameras = defaultCameras();
    options.embedded.dataDirectory = m_folder.filePath(QStringLiteral("data"));
    options.simulated.recordingDirectory = m_folder.filePath(QStringLiteral("recordings"));
    if (change) {
        change(options);
    }
    m_desk = std::make_unique<Desk>(options, m_folder.filePath(QStringLiteral("desk.ini")));
    m_desk->settings()->setTheme(QStringLiteral("light"));
    m_desk->settings()->setLanguage(language);
    if (!m_desk->load()) {
        qFatal("%s", qPrintable(m_desk->errorString()));
    }
    m_window = std::make_unique<DeskWindow>(*m_desk);
    if (!m_window->show() || !QTest::qWaitForWindowExposed(window())) {
        qFatal("the window does not come up");
    }
    window()->requestActivate();
    if (!QTest::qWaitForWindowActive(window())) { // or shortcuts go nowhere
        qFatal("the window does not get the keyboard");
    }
    if (!QTest::qWaitFor([this] { return m_desk->connection()->state() != DeskConnection::Connecting; },
                         patience)) {
        qFatal("the server does not answer");
    }
}

WindowFixture::~WindowFixture()
{
    m_window.reset();
    m_desk.reset();
    const QStringList complaints = QmlComplaints::take();
    if (!complaints.isEmpty()) {
        QTest::qFail(qPrintable(QStringLiteral("QML complains: ") + complaints.join(QStringLiteral("; "))),
                     __FILE__, __LINE__);
    }
}

QQuickItem* WindowFixture::search(QQuickItem* item, const std::function<bool(QQuickItem*)>& matches) const
{
    if (!item->isVisible() || item->opacity() == 0) {
        return nullptr;
    }
    // The newest last: what lies on top counts.
    const auto children = item->childItems();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        if (QQuickItem* found = search(*child, matches)) {
            return found;
        }
    }
    return matches(item) ? item : nullptr;
}

QQuickItem* WindowFixture::find(const std::function<bool(QQuickItem*)>& matches)
{
    QQuickItem* found = nullptr;
    const bool there = QTest::qWaitFor(
        [&] { return (found = search(window()->contentItem(), matches)) != nullptr; }, patience);
    return there ? found : nullptr;
}

bool WindowFixture::gone(const QString& objectName)
{
    return QTest::qWaitFor(
        [&] {
            return search(window()->contentItem(),
                          [&](QQuickItem* item) { return item->objectName() == objectName; }) == nullptr;
        },
        patience);
}

QQuickItem* WindowFixture::item(const QString& objectName)
{
    return find([&](QQuickItem* item) { return item->objectName() == objectName; });
}

QQuickItem* WindowFixture::control(const QString& text)
{
    return find([&](QQuickItem* item) {
        if (!item->isEnabled() || !(item->acceptedMouseButtons() & Qt::LeftButton)) {
            return false;
        }
        const QVariant name = item->property("name");
        if (item->property("text").toString() == text || name.toString() == text) {
            return true;
        }
        const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(item);
        return accessible != nullptr && accessible->text(QAccessible::Name) == text;
    });
}

bool WindowFixture::shows(const QString& text)
{
    return find([&](QQuickItem* item) {
               return item->property("text").toString().contains(text) && item->width() > 0 &&
                      item->height() > 0;
           }) != nullptr;
}

void WindowFixture::visit(const std::function<void(QQuickItem*)>& look)
{
    search(window()->contentItem(), [&look](QQuickItem* item) {
        look(item);
        return false;
    });
}

QStringList WindowFixture::cutTexts()
{
    QStringList cut;
    visit([&cut](QQuickItem* item) {
        const QString text = item->property("text").toString();
        const bool tooWide = item->inherits("QQuickText") && item->property("wrapMode").toInt() == 0 &&
                             item->width() > 0 && item->property("contentWidth").toReal() > item->width() + 1;
        if (item->property("truncated").toBool() || tooWide) {
            cut.append(text);
        }
    });
    return cut;
}

void WindowFixture::click(QQuickItem* item)
{
    const QPointer<QQuickItem> there(item);
    QVERIFY(item != nullptr && settled() && there != nullptr); // where it is, not where it was put at first
    const QPointF centre = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    QTest::mouseMove(window(), centre.toPoint());
    QTest::mouseClick(window(), Qt::LeftButton, Qt::NoModifier, centre.toPoint());
    QVERIFY(nextFrame());
}

void WindowFixture::type(const QString& text)
{
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Delete);
    for (const QChar character : text) {
        QTest::keyClick(window(), character.toLatin1());
    }
}

void WindowFixture::fill(const QString& objectName, const QString& text)
{
    QQuickItem* target = item(objectName);
    QVERIFY2(target != nullptr, qPrintable(objectName));
    const QVariant field = target->property("field");
    auto* edited = field.isValid() ? qvariant_cast<QQuickItem*>(field) : target;
    click(edited);
    QVERIFY2(edited->hasActiveFocus(), qPrintable(objectName));
    type(text);
    QCOMPARE(edited->property("text").toString(), text);
}

void WindowFixture::key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window(), key, modifiers);
}

QStringList WindowFixture::pages()
{
    QQmlExpression names(qmlContext(window()), window(), QStringLiteral("Pages.names()"));
    return names.evaluate().toStringList();
}

void WindowFixture::page(const QString& name)
{
    const int index = pages().indexOf(name);
    QVERIFY2(index >= 0, qPrintable(name));
    key(static_cast<Qt::Key>(Qt::Key_1 + index), Qt::ControlModifier);
    QTRY_COMPARE(window()->property("page").toInt(), index);
    QVERIFY(settled());
}

/** Lets the window lay out and draw what has changed; one that has been closed has nothing more to draw. */
bool WindowFixture::nextFrame()
{
    QSignalSpy frames(window(), &QQuickWindow::frameSwapped);
    window()->update();
    return QTest::qWaitFor([&] { return !frames.isEmpty() || !window()->isExposed(); }, patience);
}

WindowFixture::Places WindowFixture::places()
{
    Places places;
    visit([&places](QQuickItem* item) {
        // The bar of a meter is a plain rectangle and moves all the time; those of controls follow them.
        if (qstrcmp(item->metaObject()->className(), "QQuickRectangle") != 0) {
            places.insert(item, item->mapRectToScene(QRectF(0, 0, item->width(), item->height())));
        }
    });
    return places;
}

bool WindowFixture::settled()
{
    QElapsedTimer clock;
    clock.start();
    Places before;
    Places now;
    do {
        before = std::move(now);
        if (!nextFrame()) {
            return false;
        }
        now = places();
    } while (now != before && clock.elapsed() < patience);
    return now == before;
}

QQuickItem* WindowFixture::openPage()
{
    return window()->property("current").value<QQuickItem*>();
}

void WindowFixture::drop(QQuickItem* on, const QList<QUrl>& files)
{
    QVERIFY(on != nullptr);
    QMimeData mime;
    mime.setUrls(files);
    const QPoint at = on->mapToScene(QPointF(on->width() / 2, on->height() / 2)).toPoint();
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window(), &drop);
}

void WindowFixture::shoot(const QString& name)
{
    QVERIFY(settled());
    QDir().mkpath(QStringLiteral(SCREENSHOT_DIR));
    QVERIFY(window()->grabWindow().save(QStringLiteral(SCREENSHOT_DIR "/%1.png").arg(name)));
}
