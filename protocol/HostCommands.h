#pragma once

#include "protocol/CommandRow.h"
#include "src/vocabulary/Vocabulary.h"

#include <QString>

#include <vector>

/**
 * @file
 * Commands between host and server that the plug-in never sends: the word of each, the keys of its payload,
 * and its row of CommandTable. Each constant has the name of its word.
 */

namespace Words {

/**
 * @name Commands of cameras
 * @{
 */
/** A command, from the host to the server. */
inline const QString GetCamera = QStringLiteral("GetCamera");
inline const QString AddCamera = QStringLiteral("AddCamera");
inline const QString UpdateCamera = QStringLiteral("UpdateCamera");
inline const QString DeleteCamera = QStringLiteral("DeleteCamera");
/** @} */

/**
 * @name Cameras
 * @{
 */
/** A key of a camera's record, beside "camId". */
inline const QString camName = QStringLiteral("camName");
inline const QString online = QStringLiteral("online");
inline const QString camKind = QStringLiteral("camKind");
inline const QString camAddress = QStringLiteral("camAddress");
inline const QString camSettings = QStringLiteral("camSettings");
/** @} */

} // namespace Words

namespace CommandTable {

/** Returns the rows of these commands; a new one comes last. */
inline std::vector<Row> hostRows()
{
    namespace V = Vocabulary;
    namespace W = Words;
    const QStringList fields{W::camName, W::camKind, W::camAddress, V::username, V::password, W::camSettings};
    const QStringList answered{V::camId, W::camName, W::camKind, W::camAddress, V::username, W::camSettings};
    return {
        row(W::GetCamera, nothing(),
            maps({V::camId, W::camName, W::online, W::camKind, W::camAddress, V::username, W::camSettings})),
        row(W::AddCamera, map(fields), map(answered)),
        row(W::UpdateCamera, map(QStringList(V::camId) + fields), map(answered), map({V::camId})),
        row(W::DeleteCamera, text(), text(), text()),
    };
}

} // namespace CommandTable
