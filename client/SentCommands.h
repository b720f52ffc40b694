#pragma once

#include <QHash>
#include <QString>

#include <vector>

/**
 * What was sent to a server, by number, for what it answers: a reply counts as the answer to the command that
 * was sent under its number, whatever name stands in it.
 */
class SentCommands
{
public:
    SentCommands();

    /** Remembers a command. @return its number, which is not 0 and not that of one whose user data still
     * waits */
    quint32 add(const QString& command, void* userData);

    /** The next command has the first free number after this one. */
    void continueAfter(quint32 number) { m_last = number; }

    struct Match
    {
        QString command;
        void* userData;
    };

    /**
     * The command that a reply answers. Its user data is given with the first reply alone. A number that is 0
     * or was never sent belongs to a reply that nobody asked for: it goes by the name that stands in it,
     * without user data. So does a further reply to a command that was sent too long ago.
     */
    Match match(quint32 number, const QString& nameInReply);

    /** Forgets everything; nothing of it will be answered any more. */
    void clear();

private:
    struct Named
    {
        quint32 number = 0;
        QString command;
    };

    quint32 m_last = 0;
    std::vector<Named> m_recent;      ///< By number modulo its size.
    QHash<quint32, Match> m_withData; ///< Commands with user data that have no reply yet.
};
