#pragma once

#include "client/ServerLink.h"

#include <memory>

/**
 * A link whose server can be changed while the plug-in stays loaded. It also asks for what the host wants to
 * know itself; those replies do not reach the plug-in. Names and error texts of replies and events are made
 * printable here, for the whole window.
 */
class LinkSwitch : public ServerLink
{
    Q_OBJECT

public:
    /** Takes another link and opens it; what the old one was asked is not answered any more. */
    void use(std::unique_ptr<ServerLink> link);

    void open() override {}
    bool send(const QString& command, const QVariant& payload, quint64 request) override;

    /** Asks for the cameras. */
    void askForCameras();

Q_SIGNALS:
    /** The cameras: maps with "camId", "camName" and "online". */
    void camerasListed(const QVariantList& cameras);

private:
    std::unique_ptr<ServerLink> m_link;
    quint64 m_cameraRequest = 0; ///< Of the question for the cameras that waits for its answer; 0 for none.
    bool m_askAgain = false;     ///< They have changed since that question.
};
