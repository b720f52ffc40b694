#pragma once

#include "protocol/PayloadShape.h"

#include <QString>

#include <vector>

/**
 * All commands of the protocol. The reference server executes these and no others, clients read here how a
 * command is answered, docs/PROTOCOL.md lists the rows, and the command fuzzer sends each of them. All
 * functions may be called on any thread.
 */
namespace CommandTable {

/** How often and how soon a command is answered. */
enum class Answered
{
    AtOnce, ///< Once, without waiting for anything.
    Late,   ///< Once, after work that takes seconds.
    Often,  ///< At once, and again with each step of what was started.
};

/** A command. */
struct Row
{
    QString name;         ///< As sent.
    PayloadShape payload; ///< Of the request.
    PayloadShape answer;  ///< Of a reply with the return code "0".
    PayloadShape refusal; ///< Of replies with other codes; failures of the server itself have no payload.
    qint64 maxSize;       ///< The largest payloadSize.
    QString malformed;    ///< Return code for a payload beyond maxSize, or with a key that it does not have.
    Answered answered;    ///< How often and how soon it is answered.
};

/** Returns the rows, in an order that does not change: seeds of the fuzz targets use their index. */
const std::vector<Row>& rows();

/** Returns the row of a command; null for an unknown name. */
const Row* find(const QString& name);

} // namespace CommandTable
