#pragma once

#include "base/Result.h"
#include "platform/CaptureSelection.h"
#include "platform/Platform.h"
#include "recording/ClickSoundStyle.h"
#include "recording/RecordingQuality.h"

#include <QRect>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <variant>

namespace keldra {

/// What is named on the command line.
struct DisplayArgument {
    std::uint32_t number = 0;
};
struct WindowArgument {
    std::uint32_t windowID = 0;
};
/// Pixels from the top left of the desktop, y down.
struct AreaArgument {
    QRect rect;
};

/// What the words after `keldra record` ask for.
struct RecordArguments {
    std::variant<DisplayArgument, WindowArgument, AreaArgument> source;
    std::optional<double> seconds;
    RecordingQuality quality = RecordingQuality::high;
    /// The word that names a device; empty for the desktop's choice.
    std::optional<QString> microphone;
    std::optional<QString> camera;
    /// Ripples and dots of clicks, their sound, and a light around the pointer.
    bool showsClicks = false;
    std::optional<ClickSoundStyle> clickSound;
    bool showsHighlight = false;
    QString outputDirectory;
};

/// Errors: usage errors.
[[nodiscard]] Result<RecordArguments> parseRecordArguments(const QStringList& words);

/// The selection that the arguments name on this desktop. Errors say what is there instead.
[[nodiscard]] Result<CaptureSelection> selectionFor(const RecordArguments& arguments, const QList<Screen>& screens,
                                                    const QList<WindowInfo>& windows);

} // namespace keldra
