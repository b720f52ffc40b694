#pragma once

#include <QString>
#include <QTest>
#include <QVariant>

/** Values as they travel between host, plug-in and front end. */
namespace Variants {

/** The type and the value, also of what stands inside maps and lists. */
inline QString describe(const QVariant& value)
{
    const auto type = [&value] { return QString::fromLatin1(value.typeName()); };
    switch (value.userType()) {
    case QMetaType::UnknownType:
        return QStringLiteral("invalid");
    case QMetaType::QString:
        return QLatin1Char('"') + value.toString() + QLatin1Char('"');
    case QMetaType::QByteArray:
        return type() + QLatin1Char(' ') + QString::fromLatin1(value.toByteArray().toHex());
    case QMetaType::QVariantMap: {
        QStringList entries;
        const QVariantMap map = value.toMap();
        for (auto entry = map.begin(); entry != map.end(); ++entry) {
            entries.append(entry.key() + QStringLiteral(": ") + describe(entry.value()));
        }
        return QLatin1Char('{') + entries.join(QStringLiteral(", ")) + QLatin1Char('}');
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        QStringList entries;
        const QVariantList list = value.toList();
        for (const QVariant& entry : list) {
            entries.append(describe(entry));
        }
        return type() + QLatin1Char('[') + entries.join(QStringLiteral(", ")) + QLatin1Char(']');
    }
    default:
        return type() + QLatin1Char(' ') + value.toString();
    }
}

} // namespace Variants

/**
 * Compares types and values, also inside maps and lists. QCOMPARE of two QVariants converts the one to the
 * type of the other: "7" equals 7 for it.
 */
#define COMPARE_VARIANTS(actual, expected) QCOMPARE(Variants::describe(actual), Variants::describe(expected))
