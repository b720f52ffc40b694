#include "desk/PictureItem.h"

#include <QPainter>
#include <QQuickWindow>

PictureItem::PictureItem(QQuickItem* parent) : QQuickPaintedItem(parent) {}

void PictureItem::setView(CameraView* view)
{
    if (m_view == view) {
        return;
    }
    if (m_view) {
        m_view->disconnect(this);
    }
    m_view = view;
    if (m_view) {
        connect(m_view, &CameraView::imageChanged, this, [this] { update(); });
        reportSize();
    }
    Q_EMIT viewChanged();
    update();
}

void PictureItem::geometryChanged(const QRectF& now, const QRectF& before)
{
    QQuickPaintedItem::geometryChanged(now, before);
    reportSize();
}

void PictureItem::reportSize()
{
    if (m_view) {
        const qreal ratio = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1;
        m_view->setShownSize((QSizeF(width(), height()) * ratio).toSize());
    }
}

QSGNode* PictureItem::updatePaintNode(QSGNode* node, UpdatePaintNodeData* data)
{
    m_image = m_view ? m_view->image() : QImage();
    return QQuickPaintedItem::updatePaintNode(node, data);
}

void PictureItem::paint(QPainter* painter)
{
    if (m_image.isNull()) {
        return;
    }
    const QSizeF size = QSizeF(m_image.size()).scaled(width(), height(), Qt::KeepAspectRatio);
    const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(QRectF(corner, size), m_image);
}
