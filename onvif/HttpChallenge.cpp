#include "onvif/HttpChallenge.h"

#include <algorithm>
#include <cstring>

namespace {

bool isTokenCharacter(char character)
{
    return character > ' ' && character < '\x7f' && std::strchr("()<>@,;:\\\"/[]?={}", character) == nullptr;
}

/** Takes the words, quoted texts and signs of a header one after the other. */
class HeaderReader
{
public:
    explicit HeaderReader(const QByteArray& header) : m_header(header) {}

    bool atEnd() const { return m_at >= m_header.size(); }
    char next() const { return m_header[m_at]; }
    void skip() { ++m_at; }
    void skipBlanks()
    {
        while (!atEnd() && (next() == ' ' || next() == '\t')) {
            ++m_at;
        }
    }
    QByteArray token()
    {
        const int start = m_at;
        while (!atEnd() && isTokenCharacter(next())) {
            ++m_at;
        }
        return m_header.mid(start, m_at - start);
    }
    /** Takes a quoted text; what is between the quotes stays as it is, as the hashes want it. */
    QByteArray quoted()
    {
        const int start = ++m_at;
        while (!atEnd() && next() != '"') {
            m_at += next() == '\\' ? 2 : 1;
        }
        QByteArray text = m_header.mid(start, std::min(m_at, m_header.size()) - start);
        ++m_at;
        return text;
    }

private:
    const QByteArray& m_header;
    int m_at = 0;
};

} // namespace

QList<HttpChallenge> HttpChallenge::of(const QByteArray& header)
{
    QList<HttpChallenge> challenges;
    HeaderReader reader(header);
    while (!reader.atEnd()) {
        reader.skipBlanks();
        const QByteArray word = reader.token();
        if (word.isEmpty()) {
            if (!reader.atEnd()) {
                reader.skip(); // a comma, or what does not belong here
            }
            continue;
        }
        reader.skipBlanks();
        if (reader.atEnd() || reader.next() != '=') {
            challenges.append({word.toLower(), {}});
            continue;
        }
        reader.skip();
        reader.skipBlanks();
        const QByteArray value = !reader.atEnd() && reader.next() == '"' ? reader.quoted() : reader.token();
        if (!challenges.isEmpty()) {
            challenges.last().parameters.insert(word.toLower(), value);
        }
    }
    return challenges;
}
