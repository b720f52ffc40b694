#pragma once

#include "desk/LiveVideo.h"
#include "system/WorkerThread.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QTimer>
#include <QVariant>

class PluginHost;

/**
 * What one camera sees while somebody looks: its live video, and without one its stills, for which the server
 * is asked again and again, one question at a time. All is decoded on other threads. A picture is only ever
 * shown for the camera that it is of. Used on the window's thread.
 *
 *   ask --> answer --> decoded --> shown --> (an interval after the question, unless there is a video) ask
 *      '--> refused, or no answer --> (later) ask
 */
class CameraView : public QObject
{
    Q_OBJECT
    /** The id of the camera; empty for none. */
    Q_PROPERTY(QString camera READ camera WRITE setCamera NOTIFY changed)
    /** Whether somebody looks: nothing is asked for otherwise. */
    Q_PROPERTY(bool active READ isActive WRITE setActive NOTIFY changed)
    /** Whether there is a picture of the camera. */
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY changed)
    /** Whether that picture is older than it should be. */
    Q_PROPERTY(bool stale READ isStale NOTIFY changed)
    /** Whether that picture is of a live video. */
    Q_PROPERTY(bool live READ isLive NOTIFY changed)
    /** Why there is no live video, in words; empty when there is one, and while it is not known. */
    Q_PROPERTY(QString videoProblem READ videoProblem NOTIFY changed)
    /** Why there is no new picture, in words; empty when nothing is wrong. */
    Q_PROPERTY(QString problem READ problem NOTIFY changed)

public:
    /** Times, ms. */
    struct Times
    {
        int interval = 1000;          ///< From one question to the next.
        int patience = 20000;         ///< For an answer: the server may have to ask for the address first.
        int staleAfter = 4000;        ///< A picture that is older is stale.
        int afterRefusal = 10 * 1000; ///< From a refusal to the next question.
        int videoPatience =
            40 * 1000;              ///< For the answer to the question for a video: the camera has its time.
        int videoAgain = 30 * 1000; ///< From the end of a video to the next question for it.
    };

    static constexpr QSize largest{1280, 720}; ///< Pictures are scaled down to fit into it, pixels.

    /** @param host sends the questions, outlives the object */
    CameraView(PluginHost& host, const Times& times);
    /** The same with the usual times. */
    explicit CameraView(PluginHost& host);

    /** Returns the property camera. */
    QString camera() const { return m_camera; }
    /** Sets the property camera; the picture of the one before is gone at once. */
    void setCamera(const QString& camera);
    /** Returns the property active. */
    bool isActive() const { return m_active; }
    /** Sets the property active. */
    void setActive(bool active);
    /** Returns the property hasPicture. */
    bool hasPicture() const { return !m_image.isNull(); }
    /** Returns the property stale. */
    bool isStale() const { return hasPicture() && m_isStale; }
    /** Returns the property live. */
    bool isLive() const { return m_isLive; }
    /** Returns the property videoProblem. */
    QString videoProblem() const { return m_videoProblem; }
    /** Returns the property problem. */
    QString problem() const { return m_problem; }
    /** Returns the last picture of the camera; null for none. */
    const QImage& image() const { return m_image; }

    /** Sets how large pictures are shown, pixels; those of a video are made as small. */
    void setShownSize(const QSize& size);
    /** Reports whether the server can be asked at all. */
    void setOnline(bool online);
    /** Forgets the camera: another server follows. */
    void forgetServer() { setCamera(QString()); }

public Q_SLOTS:
    /** Takes notice of a reply of the host. */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                      quint64 request, const QVariant& result);
    /** Takes notice of an event of the host. */
    void eventArrived(const QString& event, const QVariant& payload);

Q_SIGNALS:
    /** Emitted when a property has changed. */
    void changed();
    /** Emitted when the picture has changed. */
    void imageChanged();

private:
    void restart();
    void ask();
    void askAfter(int ms);
    void decode(const QByteArray& jpeg);
    void decoded(quint64 view, const QImage& image);
    void fail(const QString& problem);
    void setImage(const QImage& image);
    void videoShown(const QImage& image);
    void videoFailed(const QString& problem);
    void leaveVideo();

    PluginHost& m_host;
    Times m_times;
    WorkerThread m_thread;
    QString m_camera;
    bool m_active = false;
    bool m_online = false;
    QImage m_image;
    bool m_isStale = false;
    QString m_problem;
    quint64 m_view = 0;    ///< Rises with each restart: what belongs to an earlier one is dropped.
    quint64 m_request = 0; ///< The question that is open; 0 for none.
    QElapsedTimer m_asked; ///< Since the last question.
    QTimer m_next;
    QTimer m_patience;
    QTimer m_staleness;
    LiveVideo m_video;
    bool m_isLive = false;
    QString m_videoProblem;
    QTimer m_videoAgain;
};
