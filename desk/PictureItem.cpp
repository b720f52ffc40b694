#include "desk/PictureItem.h"

#include <QPainter>

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
        connect(m_view, &CameraView::changed, this, [this] { update(); });
    }
    Q_EMIT viewChanged();
    update();
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
