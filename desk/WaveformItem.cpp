#include "desk/WaveformItem.h"

#include <QPainter>

#include <algorithm>

WaveformItem::WaveformItem(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    connect(this, &WaveformItem::lookChanged, this, [this] { update(); });
}

void WaveformItem::setMeters(TalkMeters* meters)
{
    if (m_meters == meters) {
        return;
    }
    if (m_meters) {
        m_meters->disconnect(this);
    }
    m_meters = meters;
    if (m_meters) {
        connect(m_meters, &TalkMeters::ticked, this, [this] {
            if (isVisible()) {
                update(); // of an item that nobody sees, it would draw the window all the same
            }
        });
    }
    Q_EMIT metersChanged();
    update();
}

void WaveformItem::itemChange(ItemChange change, const ItemChangeData& data)
{
    if (change == ItemVisibleHasChanged && data.boolValue) {
        update();
    }
    QQuickPaintedItem::itemChange(change, data);
}

void WaveformItem::paint(QPainter* painter)
{
    if (!m_meters) {
        return;
    }
    const auto& history = m_meters->history(static_cast<TalkMeters::Direction>(m_direction));
    const qreal step = width() / TalkMeters::historyLength;
    const qreal middle = height() / 2;
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_color);
    for (std::size_t i = 0; i < history.peaks.size(); ++i) {
        const float peak = history.peaks[(history.next + i) % history.peaks.size()];
        const qreal reach = std::max<qreal>(static_cast<qreal>(peak) * middle, 0.5);
        painter->drawRect(
            QRectF(static_cast<qreal>(i) * step, middle - reach, std::max(step - 1, 1.0), 2 * reach));
    }
}
