#pragma once

#include <QHash>
#include <QString>

#include <vector>

/**
 * The plug-in's commands that were sent to a server, by request number. A reply counts as the answer to the
 * command that was sent under its number, whatever name it carries.
 */
class SentRequests
{
public:
    /** A command of the plug-in, and the pointer that its reply hands back. */
    struct Request
    {
        QString command; ///< Its name.
        void* userData;  ///< Null when there is none, or when it has been handed back.
    };

    SentRequests();

    /** Remembers what was sent. @param number not 0, and not given before */
    void add(quint64 number, const QString& command, void* userData);

    /**
     * Returns what a reply answers. Its user data is given with the first reply alone. A number that is 0 or
     * was never sent belongs to a reply that nobody asked for: it goes by the name that it carries, without
     * user data. So does a further reply to a command that was sent too long ago.
     */
    Request answered(quint64 number, const QString& nameInReply);

    /** Forgets everything; nothing of it will be answered any more. */
    void clear();

private:
    struct Named
    {
        quint64 number = 0;
        QString command; ///< Its name.
    };

    std::vector<Named> m_recent;        ///< By number modulo its size.
    QHash<quint64, Request> m_withData; ///< Commands with user data that have no reply yet.
};
