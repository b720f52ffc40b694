#pragma once

#include "system/WorkerThread.h"

#include <QImage>
#include <QObject>
#include <QTimer>
#include <QVariant>

#include <memory>

class PluginHost;
class VideoDecoder;

/**
 * The live video of one camera: asks the server for it, decodes it on a thread of its own, and gives it back.
 * Used on the window's thread.
 *
 *   start --> Asking -- accepted --> Watching --> shown, shown ...
 *               '-- refused, or no answer   '-- ended, or nothing can be decoded --> failed
 */
class LiveVideo : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxWaiting =
        4; ///< Pictures that wait for the thread; then up to a key frame none do.
    static constexpr int maxUndecoded =
        100; ///< Pictures in a row that may be none before the video has failed.

    /** @param host sends the commands, outlives the object @param patience for an answer, ms */
    LiveVideo(PluginHost& host, int patience);
    ~LiveVideo() override;

    /** Asks for the video of a camera; ends that of another one. */
    void start(const QString& camera);
    /** Ends the video; nothing is emitted from then on. */
    void stop();

    /** Sets the size into which pictures are scaled down, pixels. */
    void setFitting(const QSize& fitting) { m_fitting = fitting; }

    /** Takes notice of a reply of the host. */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                      quint64 request);
    /** Takes notice of an event of the host. */
    void eventArrived(const QString& event, const QVariant& payload);

Q_SIGNALS:
    /** The next picture. */
    void shown(const QImage& image);

    /** There is no video, or no more. @param problem in words */
    void failed(const QString& problem);

private:
    enum class State
    {
        Off,
        Asking,
        Watching,
    };

    void fail(const QString& problem);
    void take(const QVariantMap& fields);
    void decoded(quint64 view, const QImage& image);

    PluginHost& m_host;
    WorkerThread m_thread;
    std::shared_ptr<VideoDecoder> m_decoder; ///< Of the thread, one for each start.
    QString m_camera;
    QSize m_fitting;
    State m_state = State::Off;
    quint64 m_view = 0;    ///< Rises with each start and end: what belongs to an earlier one is dropped.
    quint64 m_request = 0; ///< The question that is open; 0 for none.
    QTimer m_patience;
    int m_waiting = 0; ///< Pictures that the thread has.
    bool m_needsKeyFrame = true;
    int m_undecoded = 0; ///< The last pictures, that were none.
};
