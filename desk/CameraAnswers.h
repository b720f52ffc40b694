#pragma once

#include <QCoreApplication>
#include <QStringList>
#include <QVariant>

/** What a server answers about cameras, as people read it: whatever it sends, texts and lists are bounded. */
class CameraAnswers
{
    Q_DECLARE_TR_FUNCTIONS(CameraAnswers)

public:
    static constexpr int maxFound = 256;  ///< Cameras of a search.
    static constexpr int maxText = 200;   ///< Characters of a text; an address may have more.
    static constexpr int maxEntries = 16; ///< Of a list inside an answer.

    /**
     * Returns what FindCameras found.
     *
     * @param result its payload
     * @return maps with "name", never empty, "address", which may be, and "detail": hardware, location and
     * remark
     */
    static QVariantList found(const QVariant& result);

    /** Returns the answer to AskCamera, line by line. @param result its payload */
    static QStringList abilities(const QVariant& result);
};
