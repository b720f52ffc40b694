#pragma once

#include "fuzz/Words.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <fuzzer/FuzzedDataProvider.h>

/** Trees of QVariants from a fuzzer's bytes, with the keys and values that handlers look for among them. */
inline QVariant variantTree(FuzzedDataProvider& input, int depth = 0)
{
    constexpr int smallNumbers = 8;
    switch (input.ConsumeIntegralInRange(0, depth < 4 ? 10 : 7)) {
    case 0:
        return QVariant();
    case 1:
        return input.ConsumeIntegral<int>();
    case 2:
        return input.ConsumeIntegral<unsigned>();
    case 3:
        return QString::fromStdString(input.ConsumeRandomLengthString(40));
    case 4:
        return QByteArray::fromStdString(input.ConsumeRandomLengthString(40));
    case 5:
        return input.ConsumeBool();
    case 6:
        return input.ConsumeFloatingPoint<double>();
    case 7: // an id, as a number or as text
        return input.ConsumeBool()
                   ? QVariant(input.ConsumeIntegralInRange(-2, smallNumbers))
                   : QVariant(QString::number(input.ConsumeIntegralInRange(-2, smallNumbers)));
    case 8: {
        QVariantList list;
        for (int left = input.ConsumeIntegralInRange(0, 5); left > 0; --left) {
            list.append(variantTree(input, depth + 1));
        }
        return list;
    }
    case 9: {
        QStringList list;
        for (int left = input.ConsumeIntegralInRange(0, 5); left > 0; --left) {
            list.append(QString::fromStdString(input.ConsumeRandomLengthString(10)));
        }
        return list;
    }
    default: {
        QVariantMap map;
        for (int left = input.ConsumeIntegralInRange(0, 8); left > 0; --left) {
            const QString key = input.ConsumeBool()
                                    ? *input.PickValueInArray(FuzzWords::keys)
                                    : QString::fromStdString(input.ConsumeRandomLengthString(10));
            map.insert(key, variantTree(input, depth + 1));
        }
        return map;
    }
    }
}
