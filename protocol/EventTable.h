#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/**
 * All events of the protocol, server to client. docs/PROTOCOL.md lists the rows. All functions may be called
 * on any thread.
 */
namespace EventTable {

/** Who handles an event at the client. */
enum class Receiver
{
    Plugin, ///< An event of Vocabulary.h: the plug-in, and the host may listen.
    Host,   ///< An event of Words.h: the host alone; the plug-in is never given it.
};

/** An event. */
struct Row
{
    QString name;      ///< As sent.
    bool nested;       ///< Whether the fields are in a map under the event's own name.
    QStringList keys;  ///< Of the fields.
    Receiver receiver; ///< Who handles it at the client.
};

/** Returns the rows, in an order that does not change: seeds of the fuzz targets use their index. */
const std::vector<Row>& rows();

/** Returns whether the plug-in gets an event; false for the host's own and for unknown ones. */
bool isForPlugin(const QString& event);

} // namespace EventTable
