#include "client/RequestNumber.h"

#include <atomic>

quint64 nextRequestNumber()
{
    static std::atomic<quint64> last{0};
    quint64 number = 0;
    do {
        number = ++last;
    } while (static_cast<quint32>(number) == 0); // on the wire 0 is a reply that nobody asked for
    return number;
}
