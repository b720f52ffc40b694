#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/SpeakerBackend.h"

#include <functional>
#include <memory>
#include <vector>

/** One kind of cameras, and what makes its back end for one server. */
struct CameraKind
{
    QString name; ///< As camera records give it.
    std::function<std::unique_ptr<CameraBackend>()> makeBackend;
};

/** A kind of cameras that this program could have, but was built without. */
struct AbsentCameraKind
{
    QString name;
    QString reason; ///< For people.
};

/** One kind of speakers, and what makes its back end for one server. */
struct SpeakerKind
{
    QString name;
    std::function<std::unique_ptr<SpeakerBackend>()> makeBackend;
};

/** The kinds of devices that a server knows: one entry each. Of several kinds that serve a speaker the first
 * counts. */
struct DeviceKinds
{
    std::vector<CameraKind> cameras;
    std::vector<SpeakerKind> speakers;
    std::vector<AbsentCameraKind> absentCameras{};
};
