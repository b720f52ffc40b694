#include "onvif/HttpReply.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr qint64 maxOverhead = 4; // bytes on the wire for one of a body

bool isDigits(const QByteArray& text)
{
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/** Whether a character must not stand in a header. */
bool isForbidden(char character)
{
    return (static_cast<unsigned char>(character) < ' ' && character != '\t') || character == '\x7f';
}

bool isHex(const QByteArray& text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

} // namespace

QByteArray HttpReply::header(const QByteArray& name) const
{
    QByteArray joined;
    for (const auto& [key, value] : m_headers) {
        if (key == name) {
            joined += joined.isEmpty() ? value : ", " + value;
        }
    }
    return joined;
}

HttpReply::State HttpReply::take(const QByteArray& bytes)
{
    if (m_state == Reading) {
        m_waiting += bytes;
        m_taken += bytes.size();
        parse();
        m_waiting.remove(0, m_at);
        m_at = 0;
        if (m_state == Reading && m_taken > maxHeadBytes + maxOverhead * m_maxBody) {
            m_state = TooLarge;
        }
    }
    return m_state;
}

HttpReply::State HttpReply::end()
{
    if (m_state == Reading) {
        m_state = m_part == ToTheEnd ? Done : Broken;
    }
    return m_state;
}

void HttpReply::parse()
{
    QByteArray line;
    while (m_state == Reading) {
        if (m_part == Content || m_part == ChunkData || m_part == ToTheEnd) {
            if (m_at == m_waiting.size()) {
                return;
            }
            takeContent();
            continue;
        }
        if (!takeLine(&line)) {
            return;
        }
        switch (m_part) {
        case StatusLine:
            readStatusLine(line);
            break;
        case Headers:
            readHeader(line);
            break;
        case ChunkSize:
            readChunkSize(line);
            break;
        case ChunkEnd:
            m_part = ChunkSize;
            m_state = line.isEmpty() ? Reading : Broken;
            break;
        case Trailers:
            m_state = line.isEmpty() ? Done : Reading;
            break;
        default:
            break;
        }
    }
}

/** Takes a line without its end; false when it is not whole yet, or too long. */
bool HttpReply::takeLine(QByteArray* line)
{
    const bool isHead = m_part == StatusLine || m_part == Headers || m_part == Trailers;
    const int most = isHead ? maxHeadBytes - m_headBytes : maxLineBytes;
    const int end = m_waiting.indexOf('\n', m_at);
    const int size = (end < 0 ? m_waiting.size() : end + 1) - m_at;
    if (size > most) {
        m_state = TooLarge;
        return false;
    }
    if (end < 0) {
        return false;
    }
    m_headBytes += isHead ? size : 0;
    *line = m_waiting.mid(m_at, end - m_at);
    m_at = end + 1;
    if (line->endsWith('\r')) {
        line->chop(1);
    }
    return true;
}

void HttpReply::takeContent()
{
    const int room = m_maxBody - m_body.size();
    const int waiting = m_waiting.size() - m_at;
    const int count = m_part == ToTheEnd ? waiting : std::min(m_left, waiting);
    if (count > room) {
        m_state = TooLarge;
        return;
    }
    m_body += m_waiting.mid(m_at, count);
    m_at += count;
    if (m_part == ToTheEnd) {
        return;
    }
    m_left -= count;
    if (m_left == 0 && m_part == Content) {
        m_state = Done;
    } else if (m_left == 0) {
        m_part = ChunkEnd;
    }
}

void HttpReply::readStatusLine(const QByteArray& line)
{
    const QByteArray code = line.mid(9, 3); // behind "HTTP/1.1 "
    if (!line.startsWith("HTTP/1.") || line.size() < 12 || line[8] != ' ' || !isDigits(code) ||
        (line.size() > 12 && line[12] != ' ') || code.toInt() < 100) {
        m_state = Broken;
        return;
    }
    m_status = code.toInt();
    m_headers.clear();
    m_part = Headers;
}

void HttpReply::readHeader(const QByteArray& line)
{
    if (line.isEmpty()) {
        chooseBody();
        return;
    }
    if (std::any_of(line.begin(), line.end(), isForbidden)) {
        m_state = Broken; // RFC 9110, clause 5.5; parts of it may be sent back
        return;
    }
    const int colon = line.indexOf(':');
    if (colon > 0) {
        m_headers.append({line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed()});
    }
}

/** Finds out how long the body is (RFC 9112, clause 6.3). */
void HttpReply::chooseBody()
{
    constexpr int switching = 101;
    constexpr int noContent = 204;
    constexpr int notModified = 304;
    const QByteArray encoding = header("transfer-encoding").toLower();
    QByteArray length = header("content-length");
    if (m_status / 100 == 1) {
        m_part = StatusLine; // an interim reply
        m_state = m_status == switching ? Broken : Reading;
    } else if (m_status == noContent || m_status == notModified) {
        m_state = Done;
    } else if (!encoding.isEmpty()) {
        m_part = ChunkSize;
        m_state = encoding == "chunked" ? Reading : Broken;
    } else if (length.isEmpty()) {
        m_part = ToTheEnd;
    } else if (!isDigits(length)) {
        m_state = Broken;
    } else {
        bool fits = false;
        m_left = length.toInt(&fits);
        m_part = Content;
        m_state = !fits || m_left > m_maxBody ? TooLarge : m_left == 0 ? Done : Reading;
    }
}

void HttpReply::readChunkSize(const QByteArray& line)
{
    const QByteArray digits = line.split(';').constFirst().trimmed(); // extensions mean nothing
    bool valid = false;
    const qlonglong size = digits.toLongLong(&valid, 16);
    if (!valid || !isHex(digits)) {
        m_state = Broken;
    } else if (size > m_maxBody) {
        m_state = TooLarge;
    } else {
        m_left = static_cast<int>(size);
        m_part = size == 0 ? Trailers : ChunkData;
    }
}
