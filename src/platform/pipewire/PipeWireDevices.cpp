#include "platform/pipewire/PipeWireDevices.h"

#include "platform/pipewire/PipeWireAudioMeter.h"
#include "platform/pipewire/PipeWireCameraSession.h"
#include "platform/pipewire/PipeWireCaptureDevices.h"
#include "platform/pipewire/PipeWireMicrophoneStream.h"

namespace keldra {

void addPipeWireDevices(Platform& platform, Executor& mainQueue) {
    const auto devices = std::make_shared<PipeWireCaptureDevices>(mainQueue);
    platform.devices = devices;
    platform.makeMicrophoneStream = [&mainQueue] { return std::make_unique<PipeWireMicrophoneStream>(mainQueue); };
    platform.makeCameraSession = [&mainQueue] { return std::make_unique<PipeWireCameraSession>(mainQueue); };
    platform.makeAudioMeter = [devices] { return std::make_unique<PipeWireAudioMeter>(devices); };
}

} // namespace keldra
