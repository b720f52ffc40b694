#include "protocol/PayloadShape.h"

#include "protocol/FieldTypes.h"
#include "protocol/Limits.h"

#include <QVariantMap>

namespace {

/** Adds up sizes until there is enough. */
class SizeCounter
{
public:
    explicit SizeCounter(qint64 limit) : m_limit(limit) {}

    qint64 size() const { return m_size; }

    void add(const QVariant& value, int depth)
    {
        ++m_size;
        switch (static_cast<QMetaType::Type>(value.userType())) {
        case QMetaType::QString:
            m_size += value.toString().size();
            break;
        case QMetaType::QByteArray:
            m_size += value.toByteArray().size();
            break;
        case QMetaType::QStringList:
            addList(value.toStringList(), depth);
            break;
        case QMetaType::QVariantList:
            addList(value.toList(), depth);
            break;
        case QMetaType::QVariantMap: {
            const QVariantMap map = value.toMap();
            for (auto entry = map.begin(); entry != map.end() && mayNest(depth); ++entry) {
                m_size += entry.key().size();
                add(entry.value(), depth + 1);
            }
            break;
        }
        default:
            break;
        }
    }

private:
    /** Whether to go on, one level below @p depth. */
    bool mayNest(int depth)
    {
        if (depth >= Limits::maxNesting) {
            m_size = qMax(m_size, m_limit + 1);
        }
        return m_size <= m_limit;
    }

    template<class List>
    void addList(const List& list, int depth)
    {
        for (auto entry = list.begin(); entry != list.end() && mayNest(depth); ++entry) {
            add(*entry, depth + 1);
        }
    }

    qint64 m_limit;
    qint64 m_size = 0;
};

} // namespace

qint64 payloadSize(const QVariant& payload, qint64 limit)
{
    SizeCounter counter(limit);
    counter.add(payload, 0);
    return counter.size();
}

std::optional<QString> unknownKey(const PayloadShape& shape, const QVariant& payload)
{
    const QVariantMap map = payload.toMap(); // empty for anything else
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        if (!shape.keys.contains(entry.key())) {
            return entry.key();
        }
    }
    return std::nullopt;
}

bool hasKindOf(const PayloadShape& shape, const QVariant& payload)
{
    switch (shape.kind) {
    case PayloadShape::Nothing:
        return true;
    case PayloadShape::Number:
        return FieldTypes::wholeNumber(payload).has_value();
    case PayloadShape::Text:
        return payload.userType() == QMetaType::QString;
    case PayloadShape::Map:
        return payload.userType() == QMetaType::QVariantMap;
    case PayloadShape::Maps:
        return payload.userType() == QMetaType::QVariantList;
    }
    return false;
}
