#include "server/devices/onvif/H264Assembler.h"

#include "protocol/Limits.h"

#include <algorithm>

namespace {

// Types of NAL units (ITU-T H.264, table 7-1; RFC 6184, table 1).
enum NalType
{
    FirstSlice = 1,
    IdrSlice = 5,
    SequenceParameters = 7,
    PictureParameters = 8,
    Delimiter = 9,
    LastNal = 23,
    Aggregate = 24,
    Fragment = 28,
};

constexpr int typeBits = 0x1f;
constexpr int forbiddenBit = 0x80;
constexpr int startBit = 0x80;
constexpr int endBit = 0x40;
constexpr int clockRate = 90000; // of H.264 by RTP
constexpr double microsecondsOfSecond = 1e6;
constexpr int startCodeBytes = 4;
constexpr int maxBody =
    Limits::maxVideoUnitBytes -
    H264Assembler::maxParameterSets * (H264Assembler::maxParameterSetBytes + startCodeBytes);
constexpr int maxPosition = 0x7fffffff;

const QByteArray& startCode()
{
    static const QByteArray code("\0\0\0\1", startCodeBytes);
    return code;
}

int headerOf(const QByteArray& nal)
{
    return static_cast<unsigned char>(nal[0]);
}

int typeOf(const QByteArray& nal)
{
    return headerOf(nal) & typeBits;
}

bool isParameterSet(int type)
{
    return type == SequenceParameters || type == PictureParameters;
}

} // namespace

H264Assembler::H264Assembler(const QList<QByteArray>& parameterSets)
{
    for (const QByteArray& set : parameterSets) {
        if (!set.isEmpty() && isParameterSet(typeOf(set)) && set.size() <= maxParameterSetBytes) {
            keepParameterSet(set);
        }
    }
}

void H264Assembler::add(const RtpVoice& packet, std::vector<VideoUnit>& out)
{
    const bool isGap = m_started && packet.sequence != static_cast<std::uint16_t>(m_sequence + 1);
    m_started = true;
    m_sequence = packet.sequence;
    m_hasGap = m_hasGap || isGap;
    if (packet.payload.isEmpty()) {
        return; // padding alone (RFC 3550, clause 5.1)
    }
    if (m_hasGap) {
        m_isBroken = true;
    }
    if (m_isOpen && packet.timestamp != m_timestamp) {
        finish(out);
    }
    if (!m_isOpen) {
        startUnit(packet.timestamp, m_hasGap); // what was lost may have been its beginning
    }
    m_hasGap = false;
    m_time = packet.time;
    addPayload(packet.payload);
    if (packet.marker) {
        finish(out);
    }
}

void H264Assembler::startUnit(std::uint32_t timestamp, bool isBroken)
{
    m_isOpen = true;
    m_timestamp = timestamp;
    m_isBroken = isBroken;
    m_unit.clear();
    m_fragment.clear();
    m_hasSlice = false;
    m_isKeyFrame = false;
    m_hasOwnSets = false;
}

void H264Assembler::addPayload(const QByteArray& payload)
{
    if ((headerOf(payload) & forbiddenBit) != 0) {
        m_isBroken = true;
        return;
    }
    const int type = typeOf(payload);
    if (type == Fragment) {
        addFragment(payload);
        return;
    }
    m_isBroken = m_isBroken || !m_fragment.isEmpty(); // its end is missing
    m_fragment.clear();
    if (type >= FirstSlice && type <= LastNal) {
        addNal(payload);
    } else if (type == Aggregate) {
        addAggregate(payload);
    } else {
        m_isBroken = true; // of a mode that was not asked for
    }
}

/** NAL units with their lengths in front (RFC 6184, clause 5.7.1). */
void H264Assembler::addAggregate(const QByteArray& payload)
{
    constexpr int lengthBytes = 2;
    for (int at = 1; at < payload.size();) {
        if (payload.size() - at < lengthBytes) {
            m_isBroken = true;
            return;
        }
        const int length =
            (static_cast<unsigned char>(payload[at]) << 8) | static_cast<unsigned char>(payload[at + 1]);
        at += lengthBytes;
        if (length == 0 || length > payload.size() - at) {
            m_isBroken = true;
            return;
        }
        const QByteArray nal = payload.mid(at, length);
        if ((headerOf(nal) & forbiddenBit) != 0 || typeOf(nal) < FirstSlice || typeOf(nal) > LastNal) {
            m_isBroken = true;
            return;
        }
        addNal(nal);
        at += length;
    }
}

/** A part of a NAL unit (RFC 6184, clause 5.8). */
void H264Assembler::addFragment(const QByteArray& payload)
{
    constexpr int headers = 2;
    if (payload.size() <= headers) {
        m_isBroken = true;
        return;
    }
    const int part = static_cast<unsigned char>(payload[1]);
    const bool isStart = (part & startBit) != 0;
    if (isStart != m_fragment.isEmpty()) {
        m_isBroken = true; // its start is missing, or the end of the one before
    }
    if (m_isBroken) {
        m_fragment.clear();
        return;
    }
    if (isStart) {
        m_fragment.append(static_cast<char>((headerOf(payload) & ~typeBits) | (part & typeBits)));
    }
    if (m_fragment.size() + payload.size() > maxBody) {
        m_isBroken = true;
        m_fragment = QByteArray();
        return;
    }
    m_fragment.append(payload.constData() + headers, payload.size() - headers);
    if ((part & endBit) != 0) {
        const QByteArray nal = m_fragment;
        m_fragment.clear();
        addNal(nal);
    }
}

void H264Assembler::addNal(const QByteArray& nal)
{
    const int type = typeOf(nal);
    if (type == 0 || type > LastNal || m_unit.size() + startCodeBytes + nal.size() > maxBody) {
        m_isBroken = true;
    }
    if (m_isBroken) {
        m_unit = QByteArray();
        return;
    }
    if (isParameterSet(type)) {
        if (nal.size() > maxParameterSetBytes) {
            m_isBroken = true;
            return;
        }
        if (type == SequenceParameters && !m_hasOwnSets) {
            m_sets.clear(); // those of another stream
        }
        m_hasOwnSets = true;
        keepParameterSet(nal);
        return;
    }
    if (type == Delimiter) {
        return; // would have to come before the parameter sets
    }
    m_hasSlice = m_hasSlice || (type >= FirstSlice && type <= IdrSlice);
    m_isKeyFrame = m_isKeyFrame || type == IdrSlice;
    m_unit += startCode() + nal;
}

void H264Assembler::keepParameterSet(const QByteArray& nal)
{
    m_sets.removeAll(nal);
    m_sets.append(nal);
    if (m_sets.size() > maxParameterSets) {
        m_sets.removeFirst();
    }
}

QByteArray H264Assembler::parameterSets() const
{
    QByteArray bytes;
    for (const int type : {SequenceParameters, PictureParameters}) {
        for (const QByteArray& set : m_sets) {
            if (typeOf(set) == type) {
                bytes += startCode() + set;
            }
        }
    }
    return bytes;
}

/** Ends the access unit at hand. */
void H264Assembler::finish(std::vector<VideoUnit>& out)
{
    m_isOpen = false;
    const bool isBroken = m_isBroken || !m_fragment.isEmpty();
    m_fragment.clear();
    if (isBroken) {
        m_needsKeyFrame = true;
        return;
    }
    if (!m_hasSlice) {
        return; // parameter sets, and what is said about pictures
    }
    if (!isAllowed(m_time) || (m_needsKeyFrame && !m_isKeyFrame)) {
        m_needsKeyFrame = true;
        return;
    }
    const QByteArray sets = m_isKeyFrame || m_hasOwnSets ? parameterSets() : QByteArray();
    m_needsKeyFrame = false;
    out.push_back({sets + m_unit, m_isKeyFrame, positionOf(m_timestamp)});
}

/** Whether one more may come out now. */
bool H264Assembler::isAllowed(std::uint64_t time)
{
    const auto passed = m_lastTime == 0 || time < m_lastTime ? 0 : time - m_lastTime;
    m_lastTime = time;
    m_allowance =
        std::min(double{maxRate}, m_allowance + static_cast<double>(passed) * maxRate / microsecondsOfSecond);
    if (m_allowance < 1) {
        return false;
    }
    m_allowance -= 1;
    return true;
}

int H264Assembler::positionOf(std::uint32_t timestamp)
{
    if (m_hasShown) {
        m_elapsed += static_cast<std::int32_t>(timestamp - m_lastTimestamp);
    }
    m_hasShown = true;
    m_lastTimestamp = timestamp;
    constexpr int milliseconds = 1000;
    return static_cast<int>(std::clamp<std::int64_t>(m_elapsed / (clockRate / milliseconds), 0, maxPosition));
}
