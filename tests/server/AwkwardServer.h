#pragma once

#include "audio/PacketHeader.h"
#include "src/vocabulary/Vocabulary.h"
#include "tests/server/AwkwardBackend.h"
#include "tests/server/ServerHarness.h"

/** The payload that opens a talk to the camera "gate". */
inline const QVariantMap gate{{Vocabulary::camId, "gate"}, {Vocabulary::relayPath, "r"}};

/** A server with two awkward cameras and any awkward speakers. */
struct Awkward
{
    std::shared_ptr<AwkwardDevices> devices = std::make_shared<AwkwardDevices>();
    std::unique_ptr<ServerHarness> harness;

    explicit Awkward(TalkLimits limits = TalkLimits(), ServerConfig config = ServerConfig())
    {
        devices->cameras = {{"gate", "Gate"}, {"dock", "Dock"}};
        config.devices = devices->kinds();
        config.talkLimits = limits;
        harness = std::make_unique<ServerHarness>(config);
    }

    AwkwardTalk& talk(std::size_t number) { return *devices->talks.at(number); }
    bool isGone(std::size_t number) const { return devices->talks.at(number).isNull(); }

    /** Opens a talk and gives its token. */
    QString open(const QString& command = Vocabulary::StartTalk, const QVariant& payload = gate)
    {
        harness->replies.clear();
        const quint64 request = harness->submit(command, payload);
        devices->talks.back()->open();
        return harness->waitForReply(request).result.toMap()[Vocabulary::talkToken].toString();
    }
    QString openSpeaker(int id) { return open(Vocabulary::StartTalkToIPAudio, id); }
    int addSpeaker(const QString& name) { return harness->addDevice(name, "10.9.0.1"); }

    ServerReply say(const QStringList& tokens)
    {
        PacketHeader header;
        header.channels = 1;
        header.streamType = 8192;
        header.sampleRate = 8000;
        const auto bytes = header.toBytes();
        const QByteArray packet =
            QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) +
            QByteArray(640, '\xFF');
        return harness->ask(
            Vocabulary::TalkData,
            QVariantMap{{Vocabulary::targets, "<Dest>" + tokens.join("</Dest><Dest>") + "</Dest>"},
                        {Vocabulary::talkData, QString::fromLatin1(packet.toBase64())}});
    }
    ServerReply stop(const QString& token)
    {
        return harness->ask(Vocabulary::StopTalk, QVariantMap{{Vocabulary::talkToken, token}});
    }
    bool waitForEvents(std::size_t count)
    {
        return ServerHarness::waitFor([&] { return harness->events.size() >= count; }) && settled() == count;
    }
    /** How many events there are when all that was queued is done. */
    std::size_t settled()
    {
        QCoreApplication::processEvents();
        return harness->events.size();
    }
};
