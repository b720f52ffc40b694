#include "src/models/RowsById.h"

#include "src/models/ItemRows.h"

#include <QAbstractItemModel>

#include <limits>

namespace {

/** Calls a function with each int, from the shortest on, whose text @p text begins with. */
template<class Function>
void forEachNumber(const QString& text, Function function)
{
    const bool negative = text.startsWith(QLatin1Char('-'));
    const int begin = negative ? 1 : 0;
    qint64 magnitude = 0;
    for (int i = begin; i < text.size(); ++i) {
        const ushort character = text.at(i).unicode();
        if (character < '0' || character > '9') {
            return; // an id has no other characters
        }
        magnitude = magnitude * 10 + (character - '0');
        const qint64 number = negative ? -magnitude : magnitude;
        if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
            return;
        }
        if (magnitude == 0) {
            if (!negative) {
                function(0);
            }
            return; // the text of no other number begins with 0, or -0
        }
        function(static_cast<int>(number));
    }
}

} // namespace

RowsById::RowsById(const QAbstractItemModel* model) : m_model(model)
{
    const auto changed = [this] { m_stale = true; };
    QObject::connect(model, &QAbstractItemModel::rowsInserted, &m_receiver, changed);
    QObject::connect(model, &QAbstractItemModel::rowsRemoved, &m_receiver, changed);
    QObject::connect(model, &QAbstractItemModel::rowsMoved, &m_receiver, changed);
    QObject::connect(model, &QAbstractItemModel::dataChanged, &m_receiver, changed);
    QObject::connect(model, &QAbstractItemModel::layoutChanged, &m_receiver, changed);
    QObject::connect(model, &QAbstractItemModel::modelReset, &m_receiver, changed);
}

int RowsById::find(int id)
{
    if (m_stale) {
        read();
    }
    return m_rows.value(id, -1);
}

void RowsById::read()
{
    m_rows.clear();
    const int count = m_model->rowCount();
    m_rows.reserve(count);
    for (int row = 0; row < count; ++row) {
        forEachNumber(m_model->index(row, 0).data(idRole).toString(), [&](int number) {
            if (!m_rows.contains(number)) {
                m_rows.insert(number, row);
            }
        });
    }
    m_stale = false;
}
