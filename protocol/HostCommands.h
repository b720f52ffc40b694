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
inline const QString FindCameras = QStringLiteral("FindCameras");
inline const QString AskCamera = QStringLiteral("AskCamera");
inline const QString GetCameraPicture = QStringLiteral("GetCameraPicture");
inline const QString WatchCamera = QStringLiteral("WatchCamera");
inline const QString UnwatchCamera = QStringLiteral("UnwatchCamera");
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

/**
 * @name What is found out about cameras
 * @{
 */
/** A key of the answers to FindCameras and AskCamera. */
inline const QString hardware = QStringLiteral("hardware");
inline const QString location = QStringLiteral("location");
inline const QString remark = QStringLiteral("remark");
inline const QString manufacturer = QStringLiteral("manufacturer");
inline const QString model = QStringLiteral("model");
inline const QString firmware = QStringLiteral("firmware");
inline const QString speaks = QStringLiteral("speaks");
inline const QString hears = QStringLiteral("hears");
inline const QString speaksReason = QStringLiteral("speaksReason");
inline const QString hearsReason = QStringLiteral("hearsReason");
inline const QString voiceCodecs = QStringLiteral("voiceCodecs");
inline const QString talkCodecs = QStringLiteral("talkCodecs");
inline const QString streams = QStringLiteral("streams");
inline const QString remarks = QStringLiteral("remarks");
/** @} */

/** Key of a camera's picture. */
inline const QString picture = QStringLiteral("picture");

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
        late(row(W::FindCameras, nothing(),
                 maps({W::camName, W::hardware, W::location, W::camAddress, W::remark}))),
        late(row(W::AskCamera,
                 map({V::camId, W::camKind, W::camAddress, V::username, V::password, W::camSettings}),
                 map({V::camId, W::camAddress, W::manufacturer, W::model, W::firmware, W::speaks, W::hears,
                      W::speaksReason, W::hearsReason, W::voiceCodecs, W::talkCodecs, W::streams, W::remarks,
                      V::error}))),
        late(row(W::GetCameraPicture, text(), map({V::camId, W::picture}))),
        late(row(W::WatchCamera, text(), map({V::camId}))),
        row(W::UnwatchCamera, text(), nothing()),
    };
}

} // namespace CommandTable
