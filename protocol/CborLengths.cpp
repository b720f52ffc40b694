#include "protocol/CborLengths.h"

namespace {

enum MajorType // RFC 8949, clause 3.1
{
    ByteString = 2,
    TextString = 3,
    Array = 4,
    Map = 5,
};

constexpr quint8 oneByteArgument = 24; // and 25, 26, 27 for two, four, eight bytes
constexpr quint8 eightByteArgument = 27;
constexpr quint8 indefiniteLength = 31;

} // namespace

bool cborLengthsFit(const QByteArray& bytes)
{
    const auto size = static_cast<quint64>(bytes.size());
    quint64 position = 0;
    quint64 promised = 0; // entries of all arrays and maps so far, each of which takes a byte or more
    while (position < size) {
        const auto head = static_cast<quint8>(bytes.at(static_cast<int>(position)));
        ++position;
        const int type = head >> 5U;
        quint64 argument = head & 0x1FU;
        if (argument == indefiniteLength) {
            continue;
        }
        if (argument > eightByteArgument) {
            return false;
        }
        if (argument >= oneByteArgument) {
            const quint64 length = quint64{1} << (argument - oneByteArgument);
            if (size - position < length) {
                return false;
            }
            argument = 0;
            for (quint64 i = 0; i < length; ++i, ++position) {
                argument = argument << 8U | static_cast<quint8>(bytes.at(static_cast<int>(position)));
            }
        }
        if (type == ByteString || type == TextString) {
            if (argument > size - position) {
                return false;
            }
            position += argument;
        } else if (type == Array || type == Map) {
            if (argument > size - promised) {
                return false;
            }
            promised += argument;
        }
    }
    return true;
}
