#pragma once

#include "protocol/PayloadShape.h"

#include <QString>

#include <vector>

/**
 * All commands of the protocol. The reference server executes these and no others, clients read from here how
 * a command is answered, docs/PROTOCOL.md lists the rows, and the command fuzzer sends each of them. All
 * functions may be called from any thread.
 */
namespace CommandTable {

/** How often and how soon a command is answered. */
enum class Answered
{
    AtOnce, ///< Once, without waiting for anything.
    Late,   ///< Once, after work that takes seconds.
    Often,  ///< At once, and again with each step of what was started.
};

struct Row
{
    QString name;
    PayloadShape payload;
    PayloadShape answer; ///< With the return code "0".
    PayloadShape
        refusal;      ///< With other return codes; a refusal for a reason of the server's own has nothing.
    qint64 maxSize;   ///< Most that payloadSize may be.
    QString tooLarge; ///< Return code for a payload beyond maxSize.
    Answered answered;
};

/** The rows, in an order that stays: seeds of the fuzz targets name commands by their place. */
const std::vector<Row>& rows();

/** The row of a command; null when there is none of this name. */
const Row* find(const QString& name);

} // namespace CommandTable
