// What a server does with a talk packet and its echo, beside the same by Qt's classes, in the same run:
// QCborValue for the messages, QByteArray for Base64; and recordings beside libsndfile with a header for each
// packet.

#include "audio/PacketHeader.h"
#include "audio/TalkPacketDecoder.h"
#include "audio/WaveFileWriter.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"
#include "server/RecordingServer.h"
#include "server/core/ServerSession.h"
#include "server/devices/VoicePacket.h"
#include "server/devices/simulated/SimulatedDevices.h"
#include "src/Base64.h"
#include "src/vocabulary/StreamType.h"
#include "tests/support/QtWireMessage.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <vector>

namespace {

const QString token = QStringLiteral("0123456789abcdef0123456789abcdef");

QByteArray talkPacket()
{
    PacketHeader header;
    header.channels = 1;
    header.streamType = StreamType::G711MuLaw;
    header.sampleRate = 8000;
    const auto bytes = header.toBytes();
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) +
           QByteArray(640, 'x');
}

QByteArray talkData(const QString& target = token)
{
    WireMessage message;
    message.kind = WireMessage::Command;
    message.id = 1000;
    message.name = Vocabulary::TalkData;
    message.payload = QVariantMap{{Vocabulary::targets, "<Dest>" + target + "</Dest>"},
                                  {Vocabulary::sequence, 100U},
                                  {Vocabulary::talkData, QString::fromLatin1(talkPacket().toBase64())}};
    return message.toBytes();
}

void ownTalkDataIn(benchmark::State& state)
{
    const QByteArray bytes = talkData();
    std::vector<unsigned char> packet(1024);
    for (auto _ : state) {
        const auto message = WireMessage::fromBytes(bytes, nullptr, WireMessage::Texts);
        const std::string_view text = message->talkData->talkData;
        benchmark::DoNotOptimize(
            Base64DecodeStrict(text.data(), static_cast<unsigned>(text.size()), packet.data()));
    }
}

void qtTalkDataIn(benchmark::State& state)
{
    const QByteArray bytes = talkData();
    for (auto _ : state) {
        const auto message = QtWireMessage::fromBytes(bytes, nullptr);
        const QString text = message->payload.toMap().value(Vocabulary::talkData).toString();
        benchmark::DoNotOptimize(
            QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors));
    }
}

VoicePacket voice()
{
    VoicePacket packet;
    packet.bitstream = QByteArray(640, 'x');
    packet.streamType = StreamType::G711MuLaw;
    packet.sampleRate = 8000;
    return packet;
}

void ownAudioReceivedOut(benchmark::State& state)
{
    const VoicePacket packet = voice();
    for (auto _ : state) {
        WireMessage message;
        message.kind = WireMessage::Event;
        message.name = Vocabulary::AudioReceived;
        message.encodedPayload = packet.toPayload(token);
        benchmark::DoNotOptimize(message.toBytes());
    }
}

void qtAudioReceivedOut(benchmark::State& state)
{
    const VoicePacket packet = voice();
    for (auto _ : state) {
        QVariantMap fields = packet.toFields();
        fields.insert(Words::Token, token);
        fields.insert(Words::AudioData, QString::fromLatin1(talkPacket().toBase64()));
        WireMessage message;
        message.kind = WireMessage::Event;
        message.name = Vocabulary::AudioReceived;
        message.payload = QVariantMap{{Vocabulary::AudioReceived, fields}};
        benchmark::DoNotOptimize(QtWireMessage::toBytes(message));
    }
}

WireMessage reply()
{
    WireMessage message;
    message.kind = WireMessage::Reply;
    message.id = 1000;
    message.name = Vocabulary::TalkData;
    message.code = ReturnCode::success;
    return message;
}

void ownReplyOut(benchmark::State& state)
{
    const WireMessage message = reply();
    for (auto _ : state) {
        benchmark::DoNotOptimize(message.toBytes());
    }
}

void qtReplyOut(benchmark::State& state)
{
    const WireMessage message = reply();
    for (auto _ : state) {
        benchmark::DoNotOptimize(QtWireMessage::toBytes(message));
    }
}

constexpr int packetsOfFile = 45000; // an hour; then a new file

void ownRecording(benchmark::State& state)
{
    const QTemporaryDir folder;
    const std::vector<std::int16_t> samples(640, 1000);
    auto writer = std::make_unique<WaveFileWriter>(folder.filePath("own.wav"), 8000);
    int packets = 0;
    for (auto _ : state) {
        if (!writer->write(samples)) {
            state.SkipWithError("a packet was not written");
            break;
        }
        if (++packets % packetsOfFile == 0) {
            writer = std::make_unique<WaveFileWriter>(folder.filePath("own.wav"), 8000);
        }
    }
}

void sndfileRecording(benchmark::State& state)
{
    const QTemporaryDir folder;
    const QByteArray path = folder.filePath("sndfile.wav").toLocal8Bit();
    const std::vector<std::int16_t> samples(640, 1000);
    const auto open = [&] {
        SF_INFO info{};
        info.samplerate = 8000;
        info.channels = 1;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        SNDFILE* file = sf_open(path.constData(), SFM_WRITE, &info);
        sf_command(file, SFC_SET_UPDATE_HEADER_AUTO, nullptr, SF_TRUE);
        return file;
    };
    SNDFILE* file = open();
    int packets = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            sf_write_short(file, samples.data(), static_cast<sf_count_t>(samples.size())));
        if (++packets % packetsOfFile == 0) {
            sf_close(file);
            file = open();
        }
    }
    sf_close(file);
}

void packetToPcm(benchmark::State& state)
{
    const QByteArray packet = talkPacket();
    for (auto _ : state) {
        benchmark::DoNotOptimize(TalkPacketDecoder::decode(packet));
    }
}

/** A server with a camera that echoes at once, and a client without a socket. */
class Talking
{
public:
    Talking() : m_server(config()), m_session(m_server)
    {
        m_session.setTakesEncoded();
        QObject::connect(&m_session, &ServerSession::replied,
                         [this](const QString& command, quint64 request, const ServerReply& reply) {
                             WireMessage message = ::reply();
                             message.id = static_cast<quint32>(request);
                             message.name = command;
                             message.payload = reply.result;
                             message.code = reply.returnCode;
                             benchmark::DoNotOptimize(message.toBytes());
                             m_token = reply.result.toMap().value(Vocabulary::talkToken, m_token).toString();
                         });
        QObject::connect(&m_session, &ServerSession::encodedEventRaised,
                         [this](const QString& event, const QByteArray& payload) {
                             WireMessage message;
                             message.kind = WireMessage::Event;
                             message.name = event;
                             message.encodedPayload = payload;
                             benchmark::DoNotOptimize(message.toBytes());
                             ++m_echoes;
                         });
    }

    /** Begins a talk in the place of the one before. */
    void start()
    {
        stop();
        m_session.submit(Vocabulary::StartTalk, QVariantMap{{Vocabulary::camId, QStringLiteral("echo")}}, 1);
        while (m_token.isEmpty()) {
            QCoreApplication::processEvents();
        }
        m_packet = talkData(m_token);
    }

    /** Ends the talk; its recording goes, too. */
    void stop()
    {
        m_session.submit(Vocabulary::StopTalk, QVariantMap{{Vocabulary::talkToken, m_token}}, 2);
        m_token.clear();
        QCoreApplication::processEvents();
        QDir recordings(m_folder.path());
        for (const QString& name : recordings.entryList(QDir::Files)) {
            recordings.remove(name);
        }
    }

    /** Sends so many packets and waits for their echoes. */
    void send(int packets)
    {
        m_echoes = 0;
        for (int i = 0; i < packets; ++i) {
            const auto message = WireMessage::fromBytes(m_packet, nullptr, WireMessage::Texts);
            m_session.submitTalkData(*message->talkData, message->id);
        }
        while (m_echoes < packets) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

private:
    ServerConfig config() const
    {
        SimulatedConfig simulated;
        CameraVoiceConfig voice = echoingVoice();
        voice.echoDelay = 0;
        simulated.cameras = {{QStringLiteral("echo"), QStringLiteral("echo"), true, voice}};
        simulated.recordingDirectory = m_folder.path();
        ServerConfig config;
        config.devices = simulatedDevices(simulated);
        return config;
    }

    QTemporaryDir m_folder;
    RecordingServer m_server;
    ServerSession m_session;
    QString m_token;
    QByteArray m_packet;
    int m_echoes = 0;
};

/** All of a server's work on talk packets but the socket: message, decoding, recording, echo, reply, event.
 */
void wholePackets(benchmark::State& state)
{
    constexpr int together = 100;  // as many come in a few milliseconds of a busy server
    constexpr int perTalk = 20000; // then a new talk, for the sake of the disk
    Talking talking;
    int packets = 0;
    for (auto _ : state) {
        if (packets % perTalk == 0) {
            state.PauseTiming();
            talking.start();
            state.ResumeTiming();
        }
        talking.send(together);
        packets += together;
    }
    state.SetItemsProcessed(packets);
    talking.stop();
}

} // namespace

BENCHMARK(ownTalkDataIn);
BENCHMARK(qtTalkDataIn);
BENCHMARK(ownAudioReceivedOut);
BENCHMARK(qtAudioReceivedOut);
BENCHMARK(ownReplyOut);
BENCHMARK(qtReplyOut);
BENCHMARK(ownRecording);
BENCHMARK(sndfileRecording);
BENCHMARK(packetToPcm);
BENCHMARK(wholePackets);

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
