#pragma once

#include "desk/TalkMeters.h"

#include <QColor>
#include <QPointer>
#include <QQuickPaintedItem>

/** The peaks of the last ten seconds of a talk as a line, the newest on the right. */
class WaveformItem : public QQuickPaintedItem
{
    Q_OBJECT
    /** Where the peaks come from; null for none. */
    Q_PROPERTY(TalkMeters* meters READ meters WRITE setMeters NOTIFY metersChanged)
    /** TalkMeters::Direction. */
    Q_PROPERTY(int direction MEMBER m_direction NOTIFY lookChanged)
    /** The colour of the line. */
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY lookChanged)

public:
    /** @param parent as of any item */
    explicit WaveformItem(QQuickItem* parent = nullptr);

    /** Returns the property meters. */
    TalkMeters* meters() const { return m_meters; }
    /** Sets the property meters. */
    void setMeters(TalkMeters* meters);

    /** Draws the line; on the thread that renders. */
    void paint(QPainter* painter) override;

protected:
    /** Draws what has changed while the item could not be seen. */
    void itemChange(ItemChange change, const ItemChangeData& data) override;

Q_SIGNALS:
    /** Emitted when meters has changed. */
    void metersChanged();
    /** Emitted when direction or color has changed. */
    void lookChanged();

private:
    QPointer<TalkMeters> m_meters;
    int m_direction = TalkMeters::Captured;
    QColor m_color = Qt::black;
};
