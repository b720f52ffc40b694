#pragma once

#include "desk/DeskWindow.h"
#include "tests/support/PulseServer.h"
#include "tests/support/VirtualDisplay.h"

#include <QAccessible>
#include <QApplication>
#include <QMap>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

/**
 * The desk's window with a server of its own, and a person's hands and eyes for it. A test fails when QML has
 * complained until its end.
 */
class WindowFixture
{
public:
    /** @param change what the server is to be like */
    explicit WindowFixture(const std::function<void(ClientOptions&)>& change = {},
                           const QString& language = QStringLiteral("en"));
    ~WindowFixture();

    Desk& desk() { return *m_desk; }
    QQuickWindow* window() { return m_window->window(); }
    QString folder() const { return m_folder.path(); }

    /** A visible item by its objectName; waits a while for it, null without one. */
    QQuickItem* item(const QString& objectName);
    /** A visible button, tab, row or field by its text or accessible name. */
    QQuickItem* control(const QString& text);
    /** Whether some visible text contains this; waits a while for it. */
    bool shows(const QString& text);
    /** Calls a function with every visible item. */
    void visit(const std::function<void(QQuickItem*)>& look);
    /** The visible texts that do not fit where they stand. */
    QStringList cutTexts();
    /** Waits a while until an item is not there any more. */
    bool gone(const QString& objectName);

    void click(QQuickItem* item);
    void click(const QString& text) { click(control(text)); }
    /** Types into the field that has the focus, in place of what it held. */
    void type(const QString& text);
    /** Clicks a field and types. */
    void fill(const QString& objectName, const QString& text);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /** The names of all pages, from the top of the rail. */
    QStringList pages();
    /** Opens a page by its key. */
    void page(const QString& name);
    /**
     * Waits a while until everything is laid out: two frames in a row have every visible item in the same
     * place, but for plain rectangles.
     *
     * @return whether that came
     */
    bool settled();
    /** The page that is open. */
    QQuickItem* openPage();
    void drop(QQuickItem* on, const QList<QUrl>& files);

    /** Keeps a picture of the window among the build's output. */
    void shoot(const QString& name);

private:
    using Places = QMap<QQuickItem*, QRectF>;

    bool nextFrame();
    Places places();
    QQuickItem* search(QQuickItem* item, const std::function<bool(QQuickItem*)>& matches) const;
    QQuickItem* find(const std::function<bool(QQuickItem*)>& matches);

    QTemporaryDir m_folder;
    std::unique_ptr<Desk> m_desk;
    std::unique_ptr<DeskWindow> m_window;
};

/** The main function of a test of the window: on a display of its own, at a scale. */
template<class Test>
int runWindowTest(int argc, char** argv, const char* scale = "1")
{
    constexpr int width = 2400;
    constexpr int height = 1700;
    const VirtualDisplay display(width, height);
    if (!display.ready()) {
        qFatal("Xvfb does not start. Is the package xvfb installed?");
    }
    qputenv("QT_SCALE_FACTOR", scale);
    QApplication application(argc, argv);
    QAccessible::setActive(true);
    DeskWindow::registerTypes();
    Test test;
    return QTest::qExec(&test, argc, argv);
}
