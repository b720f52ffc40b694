#pragma once

#include <QDateTime>
#include <QObject>
#include <QVariantMap>

/**
 * Whether a schedule can be saved: it is complete, and will run. Times are the server's local times, taken
 * for this machine's. Used on the window's thread.
 */
class ScheduleValidator : public QObject
{
    Q_OBJECT

public:
    /**
     * Checks a record.
     *
     * @param record with the protocol's fields, but with groupIDList and networkAudioIDList as lists of ids
     * @param now ISO 8601; empty for this moment
     * @return what is wrong with it, for people; empty when nothing is
     */
    Q_INVOKABLE QString check(const QVariantMap& record, const QString& now = QString()) const;

    /** Returns a moment in ISO 8601; this moment for an empty text, an invalid one for any other text. */
    static QDateTime momentOf(const QString& now);
};
