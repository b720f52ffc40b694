#pragma once

#include <QStringList>

/** The names of the codecs that can be chosen, for messages, in the order of the codec table. */
namespace CodecNames {

/** Returns those with an encoder. */
QStringList encoded();

/** Returns those without an encoder, of which a packet dump can be played. */
QStringList recorded();

/** Returns all in one phrase: "pcmu, pcma or aac". */
QString anyOf();

} // namespace CodecNames
