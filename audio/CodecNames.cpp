#include "audio/CodecNames.h"

#include "audio/TalkEncoder.h"
#include "src/decoders/CodecTable.h"

namespace {

template<class Predicate>
QStringList namesOf(Predicate wanted)
{
    QStringList names;
    for (const Codec& codec : codecTable) {
        if (codec.name != nullptr && wanted(codec)) {
            names.append(QString::fromLatin1(codec.name));
        }
    }
    return names;
}

} // namespace

QStringList CodecNames::encoded()
{
    return namesOf(TalkEncoder::existsFor);
}

QStringList CodecNames::recorded()
{
    return namesOf([](const Codec& codec) { return !TalkEncoder::existsFor(codec); });
}

QString CodecNames::anyOf()
{
    QStringList names = namesOf([](const Codec&) { return true; });
    const QString last = names.takeLast();
    return QStringLiteral("%1 or %2").arg(names.join(QStringLiteral(", ")), last);
}
