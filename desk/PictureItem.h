#pragma once

#include "desk/CameraView.h"

#include <QPointer>
#include <QQuickPaintedItem>

/** Draws the picture of a CameraView, as large as it fits. */
class PictureItem : public QQuickPaintedItem
{
    Q_OBJECT
    /** Whose picture; null for none. */
    Q_PROPERTY(CameraView* view READ view WRITE setView NOTIFY viewChanged)

public:
    /** @param parent as of any item */
    explicit PictureItem(QQuickItem* parent = nullptr);

    /** Returns the property view. */
    CameraView* view() const { return m_view; }
    /** Sets the property view. */
    void setView(CameraView* view);

    /** Draws the picture; on the thread that renders. */
    void paint(QPainter* painter) override;

protected:
    /** Tells the view how large its pictures are shown. */
    void geometryChanged(const QRectF& now, const QRectF& before) override;

    /** Takes the picture; on the thread that renders, while that of the window waits. */
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

Q_SIGNALS:
    /** Emitted when view has changed. */
    void viewChanged();

private:
    void reportSize();

    QPointer<CameraView> m_view;
    QImage m_image; ///< Of the thread that renders.
};
