#include "desk/LinkSwitch.h"

namespace {

const QString getCamera = QStringLiteral("GetCamera");

} // namespace

void LinkSwitch::use(std::unique_ptr<ServerLink> link)
{
    if (m_link) {
        m_link->disconnect(this);
        m_link.release()->deleteLater(); // it may be the one that is just telling something
    }
    m_link = std::move(link);
    connect(m_link.get(), &ServerLink::connected, this, [this] {
        Q_EMIT connected();
        askForCameras();
    });
    connect(m_link.get(), &ServerLink::replied, this,
            [this](const QString& command, const QVariant& result, void* userData, const QString& returnCode,
                   const QString& errorText) {
                if (command == getCamera) {
                    if (returnCode == QLatin1String("0")) { // other servers may not know the command
                        Q_EMIT camerasListed(result.toList());
                    }
                } else {
                    Q_EMIT replied(command, result, userData, returnCode, errorText);
                }
            });
    connect(m_link.get(), &ServerLink::sending, this, &LinkSwitch::sending);
    connect(m_link.get(), &ServerLink::eventRaised, this, &LinkSwitch::eventRaised);
    m_link->open();
}

bool LinkSwitch::send(const QString& command, const QVariant& payload, void* userData)
{
    return m_link && m_link->send(command, payload, userData);
}

void LinkSwitch::askForCameras()
{
    send(getCamera, QVariant(), nullptr);
}
