#pragma once

#include "protocol/EventTable.h"
#include "protocol/Words.h"
#include "server/RecordingServer.h"
#include "server/core/ServerSession.h"
#include "server/devices/simulated/SimulatedDevices.h"

#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

/** A server with one client that asks and waits for the answer. */
struct ServerHarness
{
    /** @param devices are simulated beside those of @p config */
    explicit ServerHarness(ServerConfig config = ServerConfig(),
                           const SimulatedConfig& devices = SimulatedConfig())
        : simulated(devices)
    {
        simulate(config);
        server = std::make_unique<RecordingServer>(config);
        session = std::make_unique<ServerSession>(*server);
        QObject::connect(session.get(), &ServerSession::replied,
                         [this](const QString& command, quint64 request, const ServerReply& reply) {
                             QCOMPARE(command, m_asked.value(request));
                             replies.push_back({command, request, reply});
                         });
        QObject::connect(session.get(), &ServerSession::eventRaised,
                         [this](const QString& event, const QVariant& payload) {
                             checkEvent(event, payload.toMap());
                             events.push_back({event, payload.toMap()});
                         });
    }

    /** Compares an event with its row of the table: no client knows any other field. */
    static void checkEvent(const QString& event, const QVariantMap& payload)
    {
        const auto& rows = EventTable::rows();
        const auto row = std::find_if(rows.begin(), rows.end(),
                                      [&](const EventTable::Row& each) { return each.name == event; });
        QVERIFY2(row != rows.end(), qPrintable(event));
        if (row->nested) {
            QCOMPARE(payload.keys(), QStringList{event});
        }
        const QVariantMap fields = row->nested ? payload.value(event).toMap() : payload;
        for (auto field = fields.begin(); field != fields.end(); ++field) {
            QVERIFY2(row->keys.contains(field.key()), qPrintable(event + ": " + field.key()));
        }
    }

    ~ServerHarness()
    {
        session.reset();
        server.reset();
    }

    /** Adds the simulated devices. */
    void simulate(ServerConfig& config)
    {
        if (simulated.recordingDirectory.isEmpty()) {
            simulated.recordingDirectory = folder.filePath("recordings");
        }
        const DeviceKinds own = simulatedDevices(simulated);
        config.devices.cameras.insert(config.devices.cameras.end(), own.cameras.begin(), own.cameras.end());
        config.devices.speakers.insert(config.devices.speakers.end(), own.speakers.begin(),
                                       own.speakers.end());
    }

    /** Speakers at this address are not there. */
    static SimulatedConfig offlineAt(const QString& address)
    {
        SimulatedConfig config;
        config.offlineAddresses = {address};
        return config;
    }

    /** Where a speaker's recording is; empty until it has played something. */
    QString speakerRecording(int speaker) const { return simulated.recordings->speakers.value(speaker); }

    /** Sends a command and returns its number, another one each time. */
    quint64 submit(const QString& command, const QVariant& payload = QVariant())
    {
        m_asked.insert(++m_lastRequest, command);
        session->submit(command, payload, m_lastRequest);
        return m_lastRequest;
    }

    /** Sends a command and gives the first answer with its number. */
    ServerReply ask(const QString& command, const QVariant& payload = QVariant())
    {
        replies.clear();
        return waitForReply(submit(command, payload));
    }

    /** Waits for the first answer of @ref replies to a request. */
    ServerReply waitForReply(quint64 request)
    {
        const auto found = [&] {
            return std::find_if(replies.begin(), replies.end(),
                                [&](const Answer& answer) { return answer.request == request; });
        };
        return waitFor([&] { return found() != replies.end(); }) ? found()->reply
                                                                 : ServerReply{"none", QVariant(), QString()};
    }

    template<class Condition>
    static bool waitFor(Condition condition, int timeout = 20000)
    {
        QElapsedTimer clock;
        clock.start();
        while (!condition()) {
            if (clock.elapsed() > timeout) {
                return false;
            }
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            QTest::qSleep(1);
        }
        return true;
    }

    static QVariantMap device(const QString& name, const QString& address = QStringLiteral("10.0.0.1"))
    {
        return {{Vocabulary::deviceName, name}, {Vocabulary::ip, address},
                {Vocabulary::port, 554},        {Vocabulary::username, "u"},
                {Vocabulary::password, "p"},    {Vocabulary::bindingCameraList, ""}};
    }

    int addDevice(const QString& name, const QString& address = QStringLiteral("10.0.0.1"))
    {
        return ask(Vocabulary::AddIPAudio, device(name, address))
            .result.toMap()[Vocabulary::deviceID]
            .toInt();
    }

    int addGroup(const QString& name, const QString& ids)
    {
        return ask(Vocabulary::AddNetworkAudioGroup,
                   QVariantMap{{Vocabulary::groupName, name}, {Vocabulary::networkAudioIDList, ids}})
            .result.toMap()[Vocabulary::groupID]
            .toInt();
    }

    /** Uploads a file; its id, or 0. */
    int upload(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            return 0;
        }
        const ServerReply reply =
            ask(Vocabulary::UploadFile, QVariantMap{{Words::filename, QFileInfo(path).fileName()},
                                                    {Words::content, file.readAll().toBase64()},
                                                    {Words::length, 1}});
        return reply.returnCode == ReturnCode::success
                   ? reply.result.toList().last().toMap()[Vocabulary::audioID].toInt()
                   : 0;
    }

    struct Answer
    {
        QString command;
        quint64 request;
        ServerReply reply;
    };
    struct Event
    {
        QString name;
        QVariantMap payload;
    };

    QTemporaryDir folder;
    SimulatedConfig simulated;
    std::unique_ptr<RecordingServer> server;
    std::unique_ptr<ServerSession> session;
    std::vector<Answer> replies;
    std::vector<Event> events;

private:
    QHash<quint64, QString> m_asked;           ///< Commands by their numbers.
    quint64 m_lastRequest = quint64{1} << 40U; ///< A number is not cut to fewer bits.
};
