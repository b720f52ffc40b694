#include "desk/LinkSwitch.h"

#include "client/RequestNumber.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

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
            [this](const QString& command, const QVariant& result, quint64 request, const QString& returnCode,
                   const QString& errorText) {
                if (request == m_cameraRequest) {
                    if (returnCode == ReturnCode::success) { // other servers may not know the command
                        Q_EMIT camerasListed(result.toList());
                    }
                } else {
                    Q_EMIT replied(command, result, request, returnCode, errorText);
                }
            });
    connect(m_link.get(), &ServerLink::sending, this, &LinkSwitch::sending);
    connect(m_link.get(), &ServerLink::eventRaised, this, &LinkSwitch::eventRaised);
    m_link->open();
}

bool LinkSwitch::send(const QString& command, const QVariant& payload, quint64 request)
{
    return m_link && m_link->send(command, payload, request);
}

void LinkSwitch::askForCameras()
{
    m_cameraRequest = nextRequestNumber();
    send(Words::GetCamera, QVariant(), m_cameraRequest);
}
