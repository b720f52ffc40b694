// Access units of H.264 from RTP packets, whole and broken.

#include "protocol/Limits.h"
#include "server/devices/onvif/H264Assembler.h"

#include <QTest>

namespace {

const QByteArray code("\0\0\0\1", 4);
const QByteArray sps("\x67\x42\xc0\x1f", 4);
const QByteArray otherSps("\x67\x42\xc0\x20", 4);
const QByteArray pps("\x68\xce\x3c", 3);
const QByteArray idr("\x65\x88\x84 key", 7);
const QByteArray slice("\x41\x9a next", 7);

QByteArray aggregate(const QList<QByteArray>& nals)
{
    QByteArray payload("\x78");
    for (const QByteArray& nal : nals) {
        payload.append(static_cast<char>(nal.size() >> 8)).append(static_cast<char>(nal.size())).append(nal);
    }
    return payload;
}

/** What comes out of packets that a test makes. */
struct Stream
{
    explicit Stream(const QList<QByteArray>& sets = {sps, pps}) : assembler(sets) {}

    void send(const QByteArray& payload, bool marker = true)
    {
        RtpVoice packet;
        packet.payload = payload;
        packet.sequence = sequence++;
        packet.timestamp = timestamp;
        packet.marker = marker;
        packet.time = time;
        assembler.add(packet, units);
        if (marker) {
            next();
        }
    }
    void next()
    {
        timestamp += 3600; // 40 ms
        time += 40000;
    }
    void sendFragments(const QByteArray& nal, int size, bool marker = true)
    {
        for (int at = 1; at < nal.size(); at += size) {
            const int flags = (at == 1 ? 0x80 : 0) | (at + size >= nal.size() ? 0x40 : 0);
            QByteArray payload;
            payload.append(static_cast<char>((nal[0] & 0xe0) | 28));
            payload.append(static_cast<char>(flags | (nal[0] & 31)));
            send(payload + nal.mid(at, size), marker && (flags & 0x40) != 0);
        }
    }
    bool lastIsKeyFrame() const { return !units.empty() && units.back().isKeyFrame; }

    H264Assembler assembler;
    std::vector<VideoUnit> units;
    std::uint16_t sequence = 65534; // it wraps
    std::uint32_t timestamp = 0xfffff000;
    std::uint64_t time = 1000000;
};

} // namespace

class TestH264Assembler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keyFrameComesFirst();
    void parameterSets();
    void parameterSetsOfTheirOwn();
    void aggregates();
    void fragments();
    void unitWithoutMarker();
    void loss();
    void padding();
    void brokenPackets_data();
    void brokenPackets();
    void tooLarge();
    void neverEnds();
    void tooManyParameterSets();
    void tooFast();
    void timeGoesBack();
    void positions();
};

void TestH264Assembler::keyFrameComesFirst()
{
    Stream stream;
    stream.send(slice);
    QVERIFY(stream.units.empty());
    stream.send(idr);
    stream.send(slice);
    QCOMPARE(stream.units.size(), std::size_t{2});
    QVERIFY(stream.units[0].isKeyFrame);
    QCOMPARE(stream.units[0].bytes, code + sps + code + pps + code + idr);
    QVERIFY(!stream.units[1].isKeyFrame);
    QCOMPARE(stream.units[1].bytes, code + slice);
}

void TestH264Assembler::parameterSets()
{
    Stream stream;
    stream.send("\x09\xf0", false); // a delimiter
    stream.send(otherSps, false);
    stream.send(pps, false);
    stream.send(idr);
    QCOMPARE(stream.units.size(), std::size_t{1});
    QCOMPARE(stream.units[0].bytes, code + otherSps + code + pps + code + idr);
    stream.send(idr);
    QCOMPARE(stream.units[1].bytes, stream.units[0].bytes); // the latest are kept
}

void TestH264Assembler::parameterSetsOfTheirOwn()
{
    Stream stream((QList<QByteArray>()));
    stream.send(aggregate({otherSps, pps}));
    QVERIFY(stream.units.empty());
    stream.send(idr);
    QCOMPARE(stream.units.size(), std::size_t{1});
    QCOMPARE(stream.units[0].bytes, code + otherSps + code + pps + code + idr);
}

void TestH264Assembler::aggregates()
{
    Stream stream;
    stream.send(aggregate({idr, idr}));
    QCOMPARE(stream.units.size(), std::size_t{1});
    QCOMPARE(stream.units[0].bytes, code + sps + code + pps + code + idr + code + idr);
}

void TestH264Assembler::fragments()
{
    Stream stream;
    const QByteArray large = idr + QByteArray(1000, 'x');
    stream.sendFragments(large, 100);
    stream.sendFragments(slice, 2, false);
    stream.send(slice);
    QCOMPARE(stream.units.size(), std::size_t{2});
    QCOMPARE(stream.units[0].bytes, code + sps + code + pps + code + large);
    QCOMPARE(stream.units[1].bytes, code + slice + code + slice);
}

void TestH264Assembler::unitWithoutMarker()
{
    Stream stream;
    stream.send(idr, false);
    QVERIFY(stream.units.empty());
    stream.next();
    stream.send(slice, false);
    QCOMPARE(stream.units.size(), std::size_t{1});
    QVERIFY(stream.lastIsKeyFrame());
}

void TestH264Assembler::loss()
{
    Stream stream;
    stream.send(idr);
    stream.send(slice);
    ++stream.sequence;
    stream.send(slice);
    stream.send(slice);
    QCOMPARE(stream.units.size(), std::size_t{2});
    stream.send(idr);
    QCOMPARE(stream.units.size(), std::size_t{3});
    ++stream.sequence;
    stream.send(idr); // what is lost may have been a part of it
    QCOMPARE(stream.units.size(), std::size_t{3});
}

/** Packets without a payload are no loss, and hide none. */
void TestH264Assembler::padding()
{
    Stream stream;
    const QByteArray large = idr + QByteArray(300, 'x');
    stream.send(QByteArray(), false);
    stream.send(QByteArray("\x7c\x85") + large.mid(1, 150), false);
    stream.send(QByteArray(), false);
    stream.send(QByteArray("\x7c\x45") + large.mid(151));
    stream.send(QByteArray(), false);
    stream.send(slice);
    stream.send(QByteArray());
    stream.send(slice);
    QCOMPARE(stream.units.size(), std::size_t{3});
    QCOMPARE(stream.units[0].bytes, code + sps + code + pps + code + large);
    QCOMPARE(stream.units[1].bytes, code + slice);
    ++stream.sequence;
    stream.send(QByteArray(), false);
    stream.send(idr); // what is lost may have been a part of it
    QCOMPARE(stream.units.size(), std::size_t{3});
    stream.send(idr);
    QCOMPARE(stream.units.size(), std::size_t{4});
}

void TestH264Assembler::brokenPackets_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::newRow("forbidden bit") << QByteArray("\xe5 abc");
    QTest::newRow("type 0") << QByteArray("\x60 abc");
    QTest::newRow("interleaved aggregate") << QByteArray("\x79 abc");
    QTest::newRow("interleaved fragment") << QByteArray("\x7d\x85 abc");
    QTest::newRow("aggregate cut in a length") << aggregate({slice}).append('\0');
    QTest::newRow("aggregate beyond its end") << aggregate({slice}).append("\xff\xff", 2);
    QTest::newRow("empty part of an aggregate") << aggregate({slice, QByteArray()});
    QTest::newRow("forbidden bit in an aggregate") << aggregate({slice, "\xc1 abc"});
    QTest::newRow("aggregate in an aggregate") << aggregate({aggregate({slice})});
    QTest::newRow("fragment without content") << QByteArray("\x7c\xc1");
    QTest::newRow("fragment without a start") << QByteArray("\x7c\x41 abc");
    QTest::newRow("fragment without an end") << QByteArray("\x7c\x81 abc");
    QTest::newRow("fragment of nothing") << QByteArray("\x7c\xc0 abc");
    QTest::newRow("fragment of a fragment") << QByteArray("\x7c\xdc abc");
    QTest::newRow("large parameter set") << sps + QByteArray(H264Assembler::maxParameterSetBytes, 'x');
}

void TestH264Assembler::brokenPackets()
{
    QFETCH(QByteArray, payload);
    Stream stream;
    stream.send(idr);
    stream.send(slice, false);
    stream.send(payload);
    QCOMPARE(stream.units.size(), std::size_t{1});
    stream.send(slice);
    QCOMPARE(stream.units.size(), std::size_t{1}); // it needs the one that is broken
    stream.send(idr);
    QCOMPARE(stream.units.size(), std::size_t{2});
    QCOMPARE(stream.units[1].bytes, stream.units[0].bytes);
}

void TestH264Assembler::tooLarge()
{
    Stream stream;
    const QByteArray part = idr + QByteArray(60000, 'x');
    int count = 0;
    do {
        for (int i = 0; i < count; ++i) {
            stream.send(part, false);
        }
        stream.send(part);
        ++count;
    } while (stream.units.size() == static_cast<std::size_t>(count) && count < 20);
    QVERIFY(stream.units.back().bytes.size() <= Limits::maxVideoUnitBytes);
    QVERIFY(stream.units.back().bytes.size() > Limits::maxVideoUnitBytes - 200000);
    QCOMPARE(count, static_cast<int>(stream.units.size()) + 1);
    stream.send(slice);
    QVERIFY(stream.lastIsKeyFrame()); // nothing came
    stream.send(idr);
    QCOMPARE(stream.units.size(), static_cast<std::size_t>(count));
}

void TestH264Assembler::neverEnds()
{
    Stream stream;
    stream.send(QByteArray("\x7c\x85") + QByteArray(60000, 'x'), false);
    for (int i = 0; i < 100; ++i) {
        stream.send(QByteArray("\x7c\x05") + QByteArray(60000, 'x'), false);
    }
    stream.send(QByteArray("\x7c\x45 end"));
    QVERIFY(stream.units.empty());
    stream.send(idr);
    QCOMPARE(stream.units.size(), std::size_t{1});
}

void TestH264Assembler::tooManyParameterSets()
{
    Stream stream;
    for (int i = 0; i < 1000; ++i) {
        stream.send(pps + QByteArray::number(i), false);
    }
    stream.send(idr);
    QCOMPARE(stream.units.size(), std::size_t{1});
    QCOMPARE(stream.units[0].bytes.count(code), H264Assembler::maxParameterSets + 1);
    QVERIFY(stream.units[0].bytes.contains(pps + "999"));
}

void TestH264Assembler::tooFast()
{
    Stream stream;
    for (int i = 0; i < 1000; ++i) {
        stream.time -= 40000; // all at once
        stream.send(idr);
    }
    QVERIFY(stream.units.size() >= 59 && stream.units.size() <= H264Assembler::maxRate);
    const std::size_t before = stream.units.size();
    stream.time += 1000000;
    stream.send(slice); // the one before it is missing
    QCOMPARE(stream.units.size(), before);
    stream.send(idr);
    stream.send(slice);
    QCOMPARE(stream.units.size(), before + 2);
}

/** A clock that goes back allows nothing. */
void TestH264Assembler::timeGoesBack()
{
    Stream stream;
    for (int i = 0; i < 100; ++i) {
        stream.time -= 40001;
        stream.send(idr);
    }
    QCOMPARE(stream.units.size(), static_cast<std::size_t>(H264Assembler::maxRate));
    stream.send(idr); // 40 ms later: two more
    stream.time -= 40000;
    stream.send(idr);
    stream.time -= 40000;
    stream.send(idr);
    QCOMPARE(stream.units.size(), static_cast<std::size_t>(H264Assembler::maxRate + 2));
}

void TestH264Assembler::positions()
{
    Stream stream; // the time wraps between the first and the third
    for (int i = 0; i < 3; ++i) {
        stream.send(idr);
        QCOMPARE(stream.units.back().position, 40 * i);
    }
    stream.timestamp -= 900000; // ten seconds back: before the first one
    stream.send(idr);
    QCOMPARE(stream.units.back().position, 0);
    for (int i = 0; i < 10; ++i) {
        stream.timestamp += 0x7fffffff;
        stream.send(idr);
        QVERIFY(stream.units.back().position >= 0);
    }
}

QTEST_APPLESS_MAIN(TestH264Assembler)
#include "tst_h264assembler.moc"
