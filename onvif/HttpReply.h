#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>

/**
 * Reads a reply of HTTP/1.1 (RFC 9112) as its bytes come, and holds no more of it than its limits allow.
 *
 *   status line ─▶ headers ─▶ body: by its length, in chunks, or up to the end of the connection
 */
class HttpReply
{
public:
    static constexpr int maxHeadBytes = 16 << 10; ///< Of status line and headers, interim replies included.
    static constexpr int maxLineBytes = 4096;     ///< Of a line of a chunked body.

    /** How far it is. */
    enum State
    {
        Reading,  ///< More is to come.
        Done,     ///< It is whole.
        Broken,   ///< It is no HTTP, or it broke off.
        TooLarge, ///< It is beyond a limit.
    };

    /** @param maxBodyBytes that are taken, of four times as many bytes on the wire at most: chunks have
     * frames */
    explicit HttpReply(int maxBodyBytes) : m_maxBody(maxBodyBytes) {}

    /** Takes the next bytes of the connection. */
    State take(const QByteArray& bytes);

    /** Takes the end of the connection. */
    State end();

    /** Returns how far it is. */
    State state() const { return m_state; }
    /** Returns the status; 0 before it came. */
    int status() const { return m_status; }
    /** Returns the values of a header, joined with commas. @param name in small letters */
    QByteArray header(const QByteArray& name) const;
    /** Returns the body so far. */
    const QByteArray& body() const { return m_body; }

private:
    enum Part
    {
        StatusLine,
        Headers,
        Content,  ///< m_left bytes.
        ToTheEnd, ///< All that comes.
        ChunkSize,
        ChunkData, ///< m_left bytes.
        ChunkEnd,
        Trailers,
    };

    void parse();
    bool takeLine(QByteArray* line);
    void takeContent();
    void readStatusLine(const QByteArray& line);
    void readHeader(const QByteArray& line);
    void readChunkSize(const QByteArray& line);
    void chooseBody();

    int m_maxBody;
    State m_state = Reading;
    Part m_part = StatusLine;
    QByteArray m_waiting; ///< Bytes that came; those before m_at are read.
    int m_at = 0;
    qint64 m_taken = 0; ///< Bytes that came in all.
    int m_headBytes = 0;
    int m_left = 0;
    int m_status = 0;
    QList<QPair<QByteArray, QByteArray>> m_headers; ///< Names in small letters.
    QByteArray m_body;
};
