#include "tools/decode/DecodeCommand.h"

#include "audio/AdtsHeader.h"
#include "audio/CodecNames.h"
#include "audio/PacketDump.h"
#include "audio/PacketStream.h"
#include "src/decoders/CodecTable.h"
#include "src/vocabulary/StreamType.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include "system/MediaFiles.h"

#include <cstdio>
#include <memory>

namespace {

enum Status
{
    AllDecoded = 0,
    WrongUsage = 1,
    FileFailed = 2,
    PacketsFailed = 3,
};

constexpr char help[] = R"(voicedesk-decode - turns a packet dump into sound

usage: voicedesk-decode [options] INPUT OUTPUT

INPUT is a row of records: a 32-bit little-endian length and that many bytes of
bitstream, one packet each. OUTPUT becomes a WAV file of 16-bit samples.

options:
  --codec NAME      %1
  --stream-type N   the codec by its number, in place of --codec
  --rate HZ         sample rate (default: the codec's; AAC: as its header says)
  --channels N      channels (default: 1; AAC: as its header says)
  --bit-rate N      bit/s of a G.726 stream (default: 32000)
  --packing SIDE    G.726: codewords from the "left" (most significant) or the
                    "right" (least significant) bit (default: right)
  --frames N        codec frames in each packet (default: 1)
  --raw             write samples without a header, little endian
  -h, --help        this text
      --version     the program's version

A packet that cannot be decoded adds no samples: it is named on stderr by its
number, from 0, and the next one follows.

exit status:
  0  all packets decoded      2  a file cannot be read or written
  1  wrong usage              3  some packets were not decoded
)";

struct Options
{
    const Codec* codec = nullptr;
    QString input;
    QString output;
    StreamParameters stream;
    int outputRate = 0; ///< Hz.
    int outputChannels = 0;
    bool raw = false;
};

int complain(Status status, const QString& message)
{
    std::fprintf(stderr, "voicedesk-decode: %s\n", qUtf8Printable(message));
    if (status == WrongUsage) {
        std::fputs("Try: voicedesk-decode --help\n", stderr);
    }
    return status;
}

/** A whole number in a range; empty when the option is set to anything else. */
std::optional<std::uint32_t> number(const QCommandLineParser& parser, const QString& option,
                                    std::uint32_t fallback, std::uint32_t least, std::uint32_t most,
                                    QString* error)
{
    if (!parser.isSet(option)) {
        return fallback;
    }
    bool valid = false;
    const uint value = parser.value(option).toUInt(&valid);
    if (!valid || value < least || value > most) {
        *error = QStringLiteral("--%1 takes a number from %2 to %3").arg(option).arg(least).arg(most);
        return std::nullopt;
    }
    return value;
}

const Codec* findCodec(const QCommandLineParser& parser, QString* error)
{
    const QString codecOption = QStringLiteral("codec");
    const QString typeOption = QStringLiteral("stream-type");
    if (parser.isSet(codecOption) == parser.isSet(typeOption)) {
        *error = QStringLiteral("give either --codec or --stream-type");
        return nullptr;
    }
    for (const Codec& codec : codecTable) {
        const bool chosen = parser.isSet(codecOption)
                                ? parser.value(codecOption) == QLatin1String(codec.name)
                                : parser.value(typeOption) == QString::number(codec.streamType);
        if (chosen && codec.createDecoder != nullptr) {
            return &codec;
        }
    }
    *error =
        QStringLiteral("no decoder for \"%1\"").arg(parser.value(codecOption) + parser.value(typeOption));
    return nullptr;
}

/** An option that was given although it is for G.726 alone and the codec is another; empty for none. */
QString optionOfAnotherCodec(const QCommandLineParser& parser, const Codec& codec)
{
    for (const char* const name : {"bit-rate", "packing"}) {
        if (codec.streamType != StreamType::G726 && parser.isSet(QLatin1String(name))) {
            return QLatin1String(name);
        }
    }
    return QString();
}

/** Whether both paths lead to one file, which the output would overwrite before it is read. */
bool areTheSameFile(const QString& input, const QString& output)
{
    const QFileInfo first(input);
    return first.isFile() && first.canonicalFilePath() == QFileInfo(output).canonicalFilePath();
}

std::optional<Options> readOptions(const QCommandLineParser& parser, QString* error)
{
    if (parser.positionalArguments().size() != 2) {
        *error = QStringLiteral("give one INPUT and one OUTPUT");
        return std::nullopt;
    }
    const Codec* codec = findCodec(parser, error);
    if (codec == nullptr) {
        return std::nullopt;
    }
    if (const QString option = optionOfAnotherCodec(parser, *codec); !option.isEmpty()) {
        *error = QStringLiteral("--%1 is for g726 alone").arg(option);
        return std::nullopt;
    }
    constexpr std::uint32_t maxRate = 768000;
    constexpr std::uint32_t maxChannels = 255;
    constexpr std::uint32_t anyNumber = 0xFFFFFFFF;
    const auto rate = number(parser, QStringLiteral("rate"), 0, 1, maxRate, error);
    const auto channels = number(parser, QStringLiteral("channels"), 0, 1, maxChannels, error);
    const auto bitRate = number(parser, QStringLiteral("bit-rate"), codec->bitRate, 0, anyNumber, error);
    const auto frames = number(parser, QStringLiteral("frames"), 1, 0, anyNumber, error);
    const QString packing = parser.value(QStringLiteral("packing"));
    if (!rate || !channels || !bitRate || !frames) {
        return std::nullopt;
    }
    if (packing != QLatin1String("left") && packing != QLatin1String("right")) {
        *error = QStringLiteral("--packing takes \"left\" or \"right\"");
        return std::nullopt;
    }

    Options options;
    options.codec = codec;
    options.input = parser.positionalArguments().at(0);
    options.output = parser.positionalArguments().at(1);
    if (areTheSameFile(options.input, options.output)) {
        *error = QStringLiteral("%1 is INPUT and OUTPUT").arg(options.input);
        return std::nullopt;
    }
    options.raw = parser.isSet(QStringLiteral("raw"));
    options.stream.streamType = codec->streamType;
    options.stream.sampleRate = *rate;
    options.stream.channels = static_cast<std::uint8_t>(*channels);
    options.stream.frameNumber = *frames;
    if (codec->streamType == StreamType::G726) {
        options.stream.bitRate = *bitRate;
        options.stream.packingMode = packing == QLatin1String("left") ? 1 : 0;
    }
    return options;
}

/** Fills in what was left to the stream. */
void completeOptions(Options& options, const PacketDump& dump)
{
    const Codec& codec = *options.codec;
    std::uint32_t rate = codec.rate;
    std::uint8_t channels = codec.channels;
    if (codec.streamType == StreamType::Aac && !dump.packets.empty()) {
        if (const auto header = AdtsHeader::parse(dump.packets.front())) {
            rate = header->sampleRate;
            channels = header->channels;
        }
    }
    if (options.stream.sampleRate == 0) {
        options.stream.sampleRate = rate;
    }
    if (options.stream.channels == 0) {
        options.stream.channels = channels;
    }
    options.outputRate = static_cast<int>(codec.fixedFormat ? codec.rate : options.stream.sampleRate);
    options.outputChannels = codec.fixedFormat ? codec.channels : options.stream.channels;
}

int decode(const Options& options, const PacketDump& dump)
{
    SF_INFO info{};
    info.samplerate = options.outputRate;
    info.channels = options.outputChannels;
    info.format = SF_FORMAT_PCM_16 | (options.raw ? SF_FORMAT_RAW | SF_ENDIAN_LITTLE : SF_FORMAT_WAV);
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(MediaFiles::open(options.output, SFM_WRITE, &info),
                                                           &sf_close);
    if (!file) {
        return complain(FileFailed, QStringLiteral("%1 cannot be written: %2")
                                        .arg(options.output, QString::fromLocal8Bit(sf_strerror(nullptr))));
    }
    PacketStream stream(options.stream);
    int failed = 0;
    for (std::size_t i = 0; i < dump.packets.size(); ++i) {
        const auto samples = stream.decode(dump.packets[i]);
        if (!samples) {
            ++failed;
            std::fprintf(stderr, "voicedesk-decode: packet %zu (%d bytes) cannot be decoded\n", i,
                         dump.packets[i].size());
            continue;
        }
        const auto count = static_cast<sf_count_t>(samples->size()) / options.outputChannels;
        if (sf_writef_short(file.get(), samples->data(), count) != count) {
            return complain(FileFailed,
                            QStringLiteral("%1 cannot be written: %2")
                                .arg(options.output, QString::fromLocal8Bit(sf_strerror(file.get()))));
        }
    }
    return failed > 0 ? PacketsFailed : AllDecoded;
}

} // namespace

int runDecodeCommand(const QStringList& arguments)
{
    QCommandLineParser parser;
    const auto takesValue = [](const char* name, const char* fallback = "") {
        return QCommandLineOption(QString::fromLatin1(name), QString(), QStringLiteral("value"),
                                  QString::fromLatin1(fallback));
    };
    parser.addOptions({takesValue("codec"), takesValue("stream-type"), takesValue("rate"),
                       takesValue("channels"), takesValue("bit-rate"), takesValue("packing", "right"),
                       takesValue("frames"), QCommandLineOption(QStringLiteral("raw")),
                       QCommandLineOption(QStringList{QStringLiteral("h"), QStringLiteral("help")}),
                       QCommandLineOption(QStringLiteral("version"))});
    if (!parser.parse(arguments)) {
        return complain(WrongUsage, parser.errorText());
    }
    if (parser.isSet(QStringLiteral("help"))) {
        std::fputs(qUtf8Printable(QString::fromLatin1(help).arg(CodecNames::anyOf())), stdout);
        return AllDecoded;
    }
    if (parser.isSet(QStringLiteral("version"))) {
        std::puts("voicedesk-decode " VOICEDESK_VERSION);
        return AllDecoded;
    }
    QString error;
    auto options = readOptions(parser, &error);
    if (!options) {
        return complain(WrongUsage, error);
    }
    const auto dump = PacketDump::read(options->input, &error);
    if (!dump) {
        return complain(FileFailed, QStringLiteral("%1 cannot be read: %2").arg(options->input, error));
    }
    completeOptions(*options, *dump);
    return decode(*options, *dump);
}
