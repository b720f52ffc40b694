#pragma once

#include "onvif/OnvifError.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <vector>

/** Whether a camera can do something, as far as its answers tell. */
enum class Ability
{
    No,      ///< It says so.
    Unknown, ///< The answers do not tell, or not with one voice.
    Yes,     ///< It says so.
};

/** A codec that a camera names. */
struct CameraCodec
{
    /** As in RTP: "PCMU", "G726", "MPEG4-GENERIC"; "G711" from cameras that do not tell mu-law from A-law. */
    QString name;
    QList<int> rates{}; ///< Hz, ascending; empty when the camera names none.

    /** Whether name and rates are the same. */
    bool operator==(const CameraCodec& other) const { return name == other.name && rates == other.rates; }
};

/** One of a camera's media profiles, with the address of its stream. */
struct CameraStream
{
    QString token;               ///< By which the camera knows the profile.
    QString name;                ///< For people.
    QUrl address;                ///< rtsp or rtsps, at the camera's own host; empty when there is none.
    bool hasPicture = false;     ///< Whether the profile has a video encoder.
    bool hasVoice = false;       ///< Whether it has what its microphone says.
    bool hasLoudspeaker = false; ///< Whether it has an audio output and a decoder.
    QString voiceCodec;          ///< RTP name; empty without a voice.
    QString pictureCodec;        ///< Of its video, "H264", "JPEG"; empty when the camera names none.
};

/** What a camera can do, and why not, by its own answers. Nothing of it comes from a talk. */
struct CameraAbilities
{
    OnvifError error = OnvifError::None; ///< Why nothing, or not all, is known.
    QString detail;                      ///< Further words to the error; may be empty.

    QUrl device;            ///< The address that was asked.
    QString manufacturer;   ///< For people; as the next two.
    QString model;          ///< May be empty.
    QString firmware;       ///< May be empty.
    qint64 clockOffset = 0; ///< How far its clock is ahead of this machine's, ms; 0 if it does not tell.

    Ability speaks = Ability::Unknown;    ///< Whether its microphone can be heard.
    Ability hears = Ability::Unknown;     ///< Whether it plays talks.
    bool hasUnusedLoudspeaker = false;    ///< It has one that no media profile uses.
    QString speaksReason;                 ///< Why not, or why it is not known; empty for Yes.
    QString hearsReason;                  ///< The same for its loudspeaker.
    std::vector<CameraCodec> voiceCodecs; ///< That it speaks in.
    std::vector<CameraCodec> talkCodecs;  ///< That its loudspeaker decodes.

    std::vector<CameraStream> streams; ///< One for each media profile, those for two-way audio first.
    QUrl snapshot;                     ///< Of a still; empty when there is none.
    QStringList remarks;               ///< What else people should know.
};

/** Returns what is said to people about the error: words and detail; empty without one. */
QString errorSentence(const CameraAbilities& abilities);

Q_DECLARE_METATYPE(CameraAbilities)
