#include "server/records/ListLimit.h"

#include "protocol/Limits.h"

ListLimit::ListLimit(RecordDatabase& database, const Kind& kind)
    : m_database(database), m_kind(kind), m_before(measure())
{
}

std::optional<ListLimit::Size> ListLimit::measure()
{
    std::optional<Size> size;
    const bool read = m_database.read(m_kind.size, {}, [&](const QSqlQuery& row) {
        size = Size{row.value(0).toInt(), row.value(1).toLongLong()};
    });
    return read ? size : std::nullopt;
}

std::optional<ServerReply> ListLimit::check()
{
    const auto after = measure();
    if (!m_before || !after) {
        return refusal(ReturnCode::storageFailed, m_database.errorString());
    }
    if (after->records > m_kind.maxRecords && after->records > m_before->records) {
        return refusal(ReturnCode::tooManyRecords, QStringLiteral("this server keeps at most %1 of them (%2)")
                                                       .arg(m_kind.maxRecords)
                                                       .arg(m_kind.limit));
    }
    if (after->bytes > Limits::maxListBytes && after->bytes > m_before->bytes) {
        return refusal(
            ReturnCode::tooManyRecords,
            QStringLiteral("the list of all of them would have more than %1 bytes of text (maxListBytes)")
                .arg(Limits::maxListBytes));
    }
    return std::nullopt;
}
