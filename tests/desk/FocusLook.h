#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>

/** What a window looks like at one moment, as far as it shows the focus: its picture and the borders in it.
 */
class FocusLook
{
public:
    /** Grabs the picture of a window whose layout is settled. */
    explicit FocusLook(QQuickWindow& window);

    /**
     * Looks for the ring of the control that has the focus: a visible border in it, for a list one around it
     * and one around its current row. The focus has changed the border, and its pixels have its colour, which
     * stands out from the pixels that were there without the focus.
     *
     * @param control what has the focus in this look
     * @param without the same window before the control got the focus
     */
    bool hasRing(const QQuickItem& control, const FocusLook& without) const;

private:
    struct Border
    {
        QRectF place; ///< In the scene.
        qreal width;
        qreal radius;
        QColor color;
    };

    void collect(QQuickItem& item);
    QColor pixel(const QPointF& at) const;
    bool isRing(const QQuickItem* item, const FocusLook& without) const;

    QImage m_picture;
    qreal m_scale;                              ///< Pixels of the picture for one of the scene.
    QHash<const QQuickItem*, Border> m_borders; ///< Of the visible rectangles.
};
