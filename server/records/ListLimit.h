#pragma once

#include "protocol/ServerReply.h"
#include "server/records/RecordDatabase.h"

#include <optional>

/**
 * Keeps the list of all records of a kind short enough for one reply: the number of records and the bytes of
 * their texts are limited. A list that is too long already, from an earlier version, may still be changed as
 * long as it does not grow. To be made inside the transaction of a change, before the change. Used on the
 * database's thread.
 */
class ListLimit
{
public:
    /** A kind of records. */
    struct Kind
    {
        QString limit;  ///< Name of the limit, as in Limits.
        int maxRecords; ///< Its value.
        QString size;   ///< SQL that selects the number of records and the bytes of their texts.
    };

    /** Measures the list. Both arguments outlive the object. */
    ListLimit(RecordDatabase& database, const Kind& kind);

    /** Measures again after the change; returns tooManyRecords or storageFailed when it is to be rolled back.
     */
    std::optional<ServerReply> check();

private:
    struct Size
    {
        int records;
        qint64 bytes;
    };
    std::optional<Size> measure();

    RecordDatabase& m_database;
    const Kind& m_kind;
    std::optional<Size> m_before;
};
