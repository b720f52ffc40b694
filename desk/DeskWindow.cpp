#include "desk/DeskWindow.h"

#include "desk/PictureItem.h"
#include "desk/WaveformItem.h"

#include <QCoreApplication>
#include <QLocale>
#include <QQmlContext>
#include <QQuickStyle>
#include <QQuickWindow>

namespace {

constexpr char module[] = "VoiceDesk";

} // namespace

void DeskWindow::registerTypes()
{
    const QString reason = QStringLiteral("the desk has the one that there is");
    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    qmlRegisterType<WaveformItem>(module, 1, 0, "Waveform");
    qmlRegisterUncreatableType<TalkControl>(module, 1, 0, "TalkControl", reason);
    qmlRegisterUncreatableType<TargetModel>(module, 1, 0, "TargetModel", reason);
    qmlRegisterUncreatableType<CameraModel>(module, 1, 0, "CameraModel", reason);
    qmlRegisterType<PictureItem>(module, 1, 0, "Picture");
    qmlRegisterUncreatableType<CameraView>(module, 1, 0, "CameraView", reason);
    qmlRegisterUncreatableType<TalkMeters>(module, 1, 0, "TalkMeters", reason);
    qmlRegisterUncreatableType<DeskConnection>(module, 1, 0, "DeskConnection", reason);
    qmlRegisterUncreatableType<PlaybackModel>(module, 1, 0, "PlaybackModel", reason);
    qmlRegisterUncreatableType<PluginClient>(module, 1, 0, "PluginClient", reason);
    qmlRegisterUncreatableType<DeviceModel>(module, 1, 0, "DeviceModel", reason);
    qmlRegisterUncreatableType<GroupModel>(module, 1, 0, "GroupModel", reason);
    qmlRegisterUncreatableType<ScheduleModel>(module, 1, 0, "ScheduleModel", reason);
    qmlRegisterUncreatableType<TalkKey>(module, 1, 0, "TalkKey", reason);
    qmlRegisterAnonymousType<CameraRequests>(module, 1);
    qmlRegisterAnonymousType<CameraTest>(module, 1);
    qmlRegisterAnonymousType<RequestTimeouts>(module, 1);
    qmlRegisterAnonymousType<ScheduleText>(module, 1);
    qmlRegisterAnonymousType<ScheduleValidator>(module, 1);
    qmlRegisterAnonymousType<DeskSettings>(module, 1);
    qmlRegisterAnonymousType<Desk>(module, 1);
}

DeskWindow::DeskWindow(Desk& desk) : m_desk(desk), m_talkKey(*desk.talk())
{
    m_engine.rootContext()->setContextProperty(QStringLiteral("desk"), &m_desk);
    m_engine.setInitialProperties({{QStringLiteral("talkKey"), QVariant::fromValue(&m_talkKey)}});
    connect(m_desk.settings(), &DeskSettings::languageChanged, this, [this] {
        translate();
        m_engine.retranslate();
    });
    translate();
}

void DeskWindow::translate()
{
    QCoreApplication::removeTranslator(&m_translator);
    const QString chosen = m_desk.settings()->language();
    const QLocale locale = chosen.isEmpty() ? QLocale::system() : QLocale(chosen);
    QLocale::setDefault(locale);
    const QString folder = QStringLiteral(":/translations");
    const QString name = QStringLiteral("voicedesk");
    // The texts of the sources are English but for the plurals.
    if (m_translator.load(locale, name, QStringLiteral("_"), folder) ||
        m_translator.load(name + QStringLiteral("_en"), folder)) {
        QCoreApplication::installTranslator(&m_translator);
    }
}

bool DeskWindow::show()
{
    m_engine.load(QUrl(QStringLiteral("qrc:/desk/Main.qml")));
    if (window() == nullptr) {
        return false;
    }
    m_talkKey.watch(window());
    return true;
}

QQuickWindow* DeskWindow::window() const
{
    const auto roots = m_engine.rootObjects();
    return roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(roots.first());
}
