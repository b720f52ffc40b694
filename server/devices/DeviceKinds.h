#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/SpeakerBackend.h"

#include <functional>
#include <memory>
#include <vector>

/** One kind of cameras, and what makes its back end for one server. */
struct CameraKind
{
    QString name;                                                ///< As camera records give it.
    std::function<std::unique_ptr<CameraBackend>()> makeBackend; ///< Never returns null.
};

/** A kind of cameras that this program could have, but was built without. */
struct AbsentCameraKind
{
    QString name;   ///< As camera records give it.
    QString reason; ///< Why it is not there, for people.
};

/** One kind of speakers, and what makes its back end for one server. */
struct SpeakerKind
{
    QString name;                                                 ///< Of the kind.
    std::function<std::unique_ptr<SpeakerBackend>()> makeBackend; ///< Never returns null.
};

/** The kinds of devices that a server knows: one entry each. */
struct DeviceKinds
{
    std::vector<CameraKind> cameras;               ///< By name.
    std::vector<SpeakerKind> speakers;             ///< The first that serves a speaker counts.
    std::vector<AbsentCameraKind> absentCameras{}; ///< Their records are refused with the reason.
};
