#pragma once

#include "protocol/CommandRow.h"

#include <QString>

#include <vector>

/**
 * All commands of the protocol. The reference server executes these and no others, clients read here how a
 * command is answered, docs/PROTOCOL.md lists the rows, and the command fuzzer sends each of them. All
 * functions may be called on any thread.
 */
namespace CommandTable {

/** Returns the rows, in an order that does not change: seeds of the fuzz targets use their index. */
const std::vector<Row>& rows();

/** Returns the row of a command; null for an unknown name. */
const Row* find(const QString& name);

} // namespace CommandTable
