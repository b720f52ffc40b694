#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/** A camera that a search found. Nothing of it is checked: anybody may answer a search, with anything. */
struct FoundCameraEntry
{
    QString name;     ///< As the device calls itself; as the next two.
    QString hardware; ///< May be empty.
    QString location; ///< May be empty.
    QString address;  ///< To reach it by, at the host that answered; empty when there is none.
    QString remark;   ///< What people should know; may be empty.
};

/** What a search for cameras found. */
struct FoundCameras
{
    QList<FoundCameraEntry> cameras; ///< In the order of their answers.
    QString error;                   ///< Why nothing could be searched, for people; empty when something was.
};

/** Whether a camera can do something, as far as its answers say. */
enum class CameraAbility
{
    No,      ///< It says so.
    Unknown, ///< The answers do not say, or not with one voice.
    Yes,     ///< It says so.
};

/** One of the streams of a camera. */
struct ReportedStream
{
    QString name;                             ///< For people.
    QString address;                          ///< Its URL without a login; may be empty.
    CameraAbility speaks = CameraAbility::No; ///< Whether it has the camera's voice.
    CameraAbility hears = CameraAbility::No;  ///< Whether it has the camera's loudspeaker.
};

/** What a camera can do, by its own answers. */
struct CameraReport
{
    QString manufacturer;                          ///< For people; as the next two.
    QString model;                                 ///< May be empty.
    QString firmware;                              ///< May be empty.
    CameraAbility speaks = CameraAbility::Unknown; ///< Whether its microphone can be heard.
    CameraAbility hears = CameraAbility::Unknown;  ///< Whether it plays talks.
    QString speaksReason;                          ///< Why not, or why it is not known; empty for Yes.
    QString hearsReason;                           ///< The same for its loudspeaker.
    QStringList voiceCodecs;       ///< That it speaks in, each with a rate where it names one: "PCMU/8000".
    QStringList talkCodecs;        ///< That its loudspeaker decodes, in the same form.
    QList<ReportedStream> streams; ///< Those for two-way audio first.
    QStringList remarks;           ///< What else people should know.
    QString error;                 ///< Why nothing, or not all, is known; empty when all was asked.
};
