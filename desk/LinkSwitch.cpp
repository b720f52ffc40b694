#include "desk/LinkSwitch.h"

#include "client/RequestNumber.h"
#include "protocol/PrintableName.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

void LinkSwitch::use(std::unique_ptr<ServerLink> link)
{
    if (m_link) {
        m_link->disconnect(this);
        m_link.release()->deleteLater(); // it may be the one that is just telling something
    }
    m_link = std::move(link);
    m_cameraRequest = 0;
    connect(m_link.get(), &ServerLink::connected, this, [this] {
        Q_EMIT connected();
        m_cameraRequest = 0; // of a connection that was lost
        askForCameras();
    });
    connect(m_link.get(), &ServerLink::replied, this,
            [this](const QString& command, const QVariant& result, quint64 request, const QString& returnCode,
                   const QString& errorText) {
                if (m_cameraRequest != 0 && request == m_cameraRequest) {
                    m_cameraRequest = 0;
                    if (returnCode == ReturnCode::success) { // other servers may not know the command
                        Q_EMIT camerasListed(withPrintableNames(result).toList());
                    }
                    if (m_askAgain) {
                        askForCameras();
                    }
                } else {
                    Q_EMIT replied(command, withPrintableNames(result), request, returnCode,
                                   printableText(errorText));
                }
            });
    connect(m_link.get(), &ServerLink::disconnected, this, &LinkSwitch::disconnected);
    connect(m_link.get(), &ServerLink::sending, this, &LinkSwitch::sending);
    connect(m_link.get(), &ServerLink::eventRaised, this,
            [this](const QString& event, const QVariant& payload) {
                Q_EMIT eventRaised(event, withPrintableNames(payload));
            });
    m_link->open();
}

bool LinkSwitch::send(const QString& command, const QVariant& payload, quint64 request)
{
    return m_link && m_link->send(command, payload, request);
}

void LinkSwitch::askForCameras()
{
    m_askAgain = m_cameraRequest != 0; // one question at a time, however often they change
    if (m_askAgain) {
        return;
    }
    m_cameraRequest = nextRequestNumber();
    if (!send(Words::GetCamera, QVariant(), m_cameraRequest)) {
        m_cameraRequest = 0;
    }
}
