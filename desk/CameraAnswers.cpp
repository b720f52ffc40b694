#include "desk/CameraAnswers.h"

#include "protocol/Limits.h"
#include "protocol/Words.h"

namespace {

QString textOf(const QVariantMap& map, const QString& key, int limit = CameraAnswers::maxText)
{
    return map.value(key).toString().left(4 * limit).simplified().left(limit);
}

QStringList textsOf(const QVariantMap& map, const QString& key)
{
    QStringList texts;
    const QVariantList list = map.value(key).toList();
    for (const QVariant& entry : list.mid(0, CameraAnswers::maxEntries)) {
        const QString text = entry.toString().left(CameraAnswers::maxText).simplified();
        if (!text.isEmpty()) {
            texts.append(text);
        }
    }
    return texts;
}

/** Joins those that are not empty. */
QString joined(QStringList texts, const QString& separator)
{
    texts.removeAll(QString());
    return texts.join(separator);
}

/** "yes" with codecs, "no" or neither with the reason. */
QString abilityLine(const QVariantMap& answer, const QString& key, const QString& reasonKey,
                    const QString& codecsKey, const QString& line)
{
    const QString ability = textOf(answer, key);
    const QString reason = textOf(answer, reasonKey);
    const QString codecs = textsOf(answer, codecsKey).join(QStringLiteral(", "));
    QString words;
    if (ability == QLatin1String("yes")) {
        words = codecs.isEmpty() ? CameraAnswers::tr("yes") : CameraAnswers::tr("yes, in %1").arg(codecs);
    } else {
        words = ability == QLatin1String("no") ? CameraAnswers::tr("no") : CameraAnswers::tr("not known");
        words += reason.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(reason);
    }
    return line.arg(words);
}

/** Whether an answer says nothing of a camera. */
bool hasNothing(const QVariantMap& answer)
{
    const auto isUnknown = [&answer](const QString& key) {
        const QString ability = textOf(answer, key);
        return ability != QLatin1String("yes") && ability != QLatin1String("no");
    };
    return isUnknown(Words::hears) && isUnknown(Words::speaks) &&
           textOf(answer, Words::manufacturer).isEmpty() && textOf(answer, Words::model).isEmpty() &&
           textsOf(answer, Words::remarks).isEmpty() && answer.value(Words::streams).toList().isEmpty();
}

} // namespace

QVariantList CameraAnswers::found(const QVariant& result)
{
    QVariantList cameras;
    const QVariantList list = result.toList();
    for (const QVariant& entry : list.mid(0, maxFound)) {
        const QVariantMap camera = entry.toMap();
        const QString address = textOf(camera, Words::camAddress, Limits::maxUrlLength);
        const QString name = textOf(camera, Words::camName, Limits::maxNameLength);
        const QString detail = joined(
            {textOf(camera, Words::hardware), textOf(camera, Words::location), textOf(camera, Words::remark)},
            QStringLiteral("  ·  "));
        cameras.append(
            QVariantMap{{QStringLiteral("name"), name.isEmpty() ? CameraAnswers::tr("A camera") : name},
                        {QStringLiteral("address"), address},
                        {QStringLiteral("detail"), detail}});
    }
    return cameras;
}

QStringList CameraAnswers::abilities(const QVariant& result)
{
    const QVariantMap answer = result.toMap();
    QStringList lines;
    if (const QString error = textOf(answer, Vocabulary::error); !error.isEmpty()) {
        if (hasNothing(answer)) {
            return {CameraAnswers::tr("The camera could not be asked: %1").arg(error)};
        }
        lines.append(CameraAnswers::tr("Not all could be asked: %1").arg(error));
    }
    lines.append(abilityLine(answer, Words::hears, Words::hearsReason, Words::talkCodecs,
                             CameraAnswers::tr("Plays what is said: %1")));
    lines.append(abilityLine(answer, Words::speaks, Words::speaksReason, Words::voiceCodecs,
                             CameraAnswers::tr("Can be heard: %1")));
    const QString make = joined(
        {textOf(answer, Words::manufacturer), textOf(answer, Words::model), textOf(answer, Words::firmware)},
        QStringLiteral(", "));
    if (!make.isEmpty()) {
        lines.append(CameraAnswers::tr("Make, model, firmware: %1").arg(make));
    }
    const QVariantList streams = answer.value(Words::streams).toList();
    for (const QVariant& entry : streams.mid(0, maxEntries)) {
        const QVariantMap stream = entry.toMap();
        const QString address = textOf(stream, Words::camAddress, Limits::maxUrlLength);
        if (!address.isEmpty()) {
            lines.append(CameraAnswers::tr("Stream \"%1\": %2").arg(textOf(stream, Words::camName), address));
        }
    }
    for (const QString& remark : textsOf(answer, Words::remarks)) {
        lines.append(remark);
    }
    return lines;
}
