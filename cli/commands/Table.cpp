#include "cli/commands/Table.h"

#include "protocol/PrintableName.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>

namespace {

QString cell(const QVariant& value)
{
    if (value.type() == QVariant::Bool) {
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    }
    if (value.type() == QVariant::StringList || value.type() == QVariant::List) {
        QStringList texts;
        const QVariantList list = value.toList();
        for (const QVariant& entry : list) {
            texts.append(entry.toString());
        }
        return printableText(texts.join(QStringLiteral(", ")));
    }
    return printableText(value.toString());
}

} // namespace

QString Table::text(bool json) const
{
    if (json) {
        QJsonArray array;
        for (const QVariantList& row : m_rows) {
            QJsonObject object;
            for (std::size_t i = 0; i < m_columns.size(); ++i) {
                object.insert(m_columns[i].key, QJsonValue::fromVariant(row.value(static_cast<int>(i))));
            }
            array.append(object);
        }
        return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented));
    }
    std::vector<int> widths;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        int width = m_columns[i].title.size();
        for (const QVariantList& row : m_rows) {
            width = std::max(width, cell(row.value(static_cast<int>(i))).size());
        }
        widths.push_back(width);
    }
    const auto line = [&](const auto& textOf) {
        QString made;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            made += textOf(i).leftJustified(widths[i] + 2);
        }
        while (made.endsWith(QLatin1Char(' '))) {
            made.chop(1);
        }
        return made + QLatin1Char('\n');
    };
    QString text = line([this](std::size_t i) { return m_columns[i].title; });
    for (const QVariantList& row : m_rows) {
        text += line([&row](std::size_t i) { return cell(row.value(static_cast<int>(i))); });
    }
    return text;
}

QVariantList toVariants(const QList<int>& ids)
{
    QVariantList list;
    for (const int id : ids) {
        list.append(id);
    }
    return list;
}

void printJson(const QVariantMap& object)
{
    const QByteArray text =
        QJsonDocument(QJsonObject::fromVariantMap(object)).toJson(QJsonDocument::Indented);
    std::fputs(text.constData(), stdout);
}
