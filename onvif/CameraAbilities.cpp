#include "onvif/CameraAbilities.h"

QString errorSentence(const CameraAbilities& abilities)
{
    const QString words = onvifErrorText(abilities.error);
    return words.isEmpty() || abilities.detail.isEmpty()
               ? words
               : QStringLiteral("%1 (%2)").arg(words, abilities.detail);
}
