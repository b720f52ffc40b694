#pragma once

#include "client/PluginClient.h"
#include "client/PluginHost.h"
#include "desk/RequestTimeouts.h"
#include "desk/TalkControl.h"

#include <QTest>

#include <memory>

/**
 * The base of tests of talks as the operator's controls see them, over the real plug-in; the other end of the
 * link is the test. There are two cameras and three speakers, and answers may take 300 ms.
 */
class TalkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

protected:
    static constexpr double silence = -200.0; ///< dBFS.

    /** A link whose other end is the test. */
    class TestLink : public ServerLink
    {
    public:
        void open() override {}
        bool send(const QString& command, const QVariant& payload, quint64 request) override
        {
            if (command != QLatin1String("TalkData")) {
                sent.append(command);
                payloads.append(payload);
                requests.append(request);
            }
            return accepts;
        }
        /** Answers the last command of this name. */
        void answer(const QString& command, const QVariant& result, const QString& code = QStringLiteral("0"),
                    const QString& text = QString())
        {
            const int at = sent.lastIndexOf(command);
            QVERIFY2(at >= 0, qPrintable(command));
            answerAt(at, result, code, text);
        }
        void answerAt(int at, const QVariant& result, const QString& code = QStringLiteral("0"),
                      const QString& text = QString())
        {
            Q_EMIT replied(sent[at], result, requests[at], code, text);
        }

        bool accepts = true;
        QStringList sent;
        QVariantList payloads;
        QVector<quint64> requests;
    };

    void openCamera();
    void openCameraByKey();
    /** Answers the request of a speaker. */
    void answerSpeaker(int id, const QString& error = QString(), const QString& code = QStringLiteral("0"));
    bool talking() const { return m_plugin->talking(); }
    TargetModel::State state(const QString& key) const { return m_targets->find(key)->state; }

    std::unique_ptr<TestLink> m_link;
    std::unique_ptr<PluginHost> m_host;
    std::unique_ptr<PluginClient> m_plugin;
    std::unique_ptr<RequestTimeouts> m_watch;
    std::unique_ptr<TargetModel> m_targets;
    std::unique_ptr<QTimer> m_tail; ///< Of the talk key.
    std::unique_ptr<TalkControl> m_talk;
    QList<std::uint32_t> m_packets; ///< Their places in the capture, samples since the microphone's start.
    double m_loudest = silence;     ///< Of the packets sent, dBFS.
};
