#include "cli/RecordArguments.h"

#include "cli/Arguments.h"

#include <QDir>

#include <algorithm>

namespace keldra {
namespace {

Error notFound(const QString& words) {
    return Error{"Record", 1, words.toStdString(), {}};
}

Result<std::uint32_t> parseIdentifier(const QString& name, const QString& text) {
    bool isNumber = false;
    const std::uint32_t number = text.toUInt(&isNumber, 0);
    if (!isNumber)
        return fail(
            usageError(QStringLiteral("%1 needs a number from \"keldra sources\", not \"%2\"").arg(name, text)));
    return number;
}

Result<QRect> parseArea(const QString& text) {
    const QStringList parts = text.split(u',');
    int numbers[4] = {};
    bool isGood = parts.size() == 4;
    for (int i = 0; isGood && i < 4; ++i)
        numbers[i] = parts[i].trimmed().toInt(&isGood);
    if (!isGood)
        return fail(usageError(QStringLiteral("--area needs X,Y,WIDTH,HEIGHT in pixels, not \"%1\"").arg(text)));
    if (numbers[2] < 1 || numbers[3] < 1)
        return fail(usageError(QStringLiteral("--area %1 is empty: width and height must be at least 1").arg(text)));
    return QRect(numbers[0], numbers[1], numbers[2], numbers[3]);
}

Result<RecordingQuality> parseQuality(const QString& text) {
    if (text == u"high")
        return RecordingQuality::high;
    if (text == u"medium")
        return RecordingQuality::medium;
    if (text == u"low")
        return RecordingQuality::low;
    return fail(usageError(QStringLiteral("--quality is high, medium or low, not \"%1\"").arg(text)));
}

Result<ClickSoundStyle> parseClickSound(const QString& text) {
    if (text == u"soft")
        return ClickSoundStyle::soft;
    if (text == u"classic")
        return ClickSoundStyle::classic;
    return fail(usageError(QStringLiteral("--click-sound is soft or classic, not \"%1\"").arg(text)));
}

QString numbersOf(const QList<Screen>& screens) {
    QStringList numbers;
    for (const Screen& screen : screens)
        numbers += QString::number(screen.number);
    return numbers.join(QStringLiteral(", "));
}

/// The upper left corner of all screens: the greatest y, as points count up.
QPointF topLeftOf(const QList<Screen>& screens) {
    QRectF all;
    for (const Screen& screen : screens)
        all |= screen.frame;
    return QPointF(all.left(), all.top() + all.height());
}

Result<CaptureSelection> selectDisplay(std::uint32_t number, const QList<Screen>& screens) {
    if (const auto screen = findScreen(screens, number))
        return DisplaySelection{screen->number, screen->name};
    return fail(notFound(QStringLiteral("there is no display %1; there is: %2").arg(number).arg(numbersOf(screens))));
}

Result<CaptureSelection> selectWindow(std::uint32_t windowID, const QList<WindowInfo>& windows) {
    const auto window = std::find_if(windows.begin(), windows.end(),
                                     [&](const WindowInfo& candidate) { return candidate.windowID == windowID; });
    if (window == windows.end())
        return fail(
            notFound(QStringLiteral("there is no window %1 on the screen; \"keldra sources\" lists what is there")
                         .arg(windowID)));
    return WindowSelection{0, windowID, window->frame, window->title};
}

Result<CaptureSelection> selectArea(const QRect& area, const QList<Screen>& screens) {
    const QPointF corner = topLeftOf(screens);
    const QRectF rect(corner.x() + area.x(), corner.y() - area.y() - area.height(), area.width(), area.height());
    const auto covered = [&](const Screen& screen) {
        const QRectF common = screen.frame & rect;
        return common.width() * common.height();
    };
    const auto best = std::max_element(screens.begin(), screens.end(),
                                       [&](const Screen& a, const Screen& b) { return covered(a) < covered(b); });
    if (best == screens.end() || covered(*best) <= 0)
        return fail(
            notFound(QStringLiteral("the area %1,%2,%3,%4 lies outside every display; \"keldra sources\" lists them")
                         .arg(area.x())
                         .arg(area.y())
                         .arg(area.width())
                         .arg(area.height())));
    return RegionSelection{best->number, rect};
}

} // namespace

Result<RecordArguments> parseRecordArguments(const QStringList& words) {
    TRY_LET(const Arguments arguments, parseArguments(words, {{"--display", OptionValue::required},
                                                              {"--window", OptionValue::required},
                                                              {"--area", OptionValue::required},
                                                              {"--seconds", OptionValue::required},
                                                              {"--quality", OptionValue::required},
                                                              {"--microphone", OptionValue::optional},
                                                              {"--camera", OptionValue::optional},
                                                              {"--clicks", OptionValue::none},
                                                              {"--click-sound", OptionValue::required},
                                                              {"--highlight", OptionValue::none},
                                                              {"--output-dir", OptionValue::required}}));
    if (!arguments.positional.isEmpty())
        return fail(usageError(QStringLiteral("record takes no argument \"%1\"").arg(arguments.positional.first())));
    if (int(arguments.has("--display")) + int(arguments.has("--window")) + int(arguments.has("--area")) != 1)
        return fail(usageError(QStringLiteral("record needs one of --display N, --window ID and --area X,Y,W,H")));

    RecordArguments record;
    if (const auto display = arguments.value("--display")) {
        TRY_LET(const std::uint32_t number, parseIdentifier("--display", *display));
        record.source = DisplayArgument{number};
    } else if (const auto window = arguments.value("--window")) {
        TRY_LET(const std::uint32_t windowID, parseIdentifier("--window", *window));
        record.source = WindowArgument{windowID};
    } else if (const auto area = arguments.value("--area")) {
        TRY_LET(const QRect rect, parseArea(*area));
        record.source = AreaArgument{rect};
    }
    if (const auto seconds = arguments.value("--seconds")) {
        TRY_LET(record.seconds, parseNumber("--seconds", *seconds));
        if (*record.seconds <= 0)
            return fail(usageError(QStringLiteral("--seconds must be more than 0")));
    }
    if (const auto quality = arguments.value("--quality")) {
        TRY_LET(record.quality, parseQuality(*quality));
    }
    record.microphone = arguments.value("--microphone");
    record.camera = arguments.value("--camera");
    record.showsClicks = arguments.has("--clicks");
    record.showsHighlight = arguments.has("--highlight");
    if (const auto sound = arguments.value("--click-sound")) {
        TRY_LET(record.clickSound, parseClickSound(*sound));
    }
    record.outputDirectory = arguments.value("--output-dir").value_or(QDir::currentPath());
    return record;
}

Result<CaptureSelection> selectionFor(const RecordArguments& arguments, const QList<Screen>& screens,
                                      const QList<WindowInfo>& windows) {
    if (const auto* display = std::get_if<DisplayArgument>(&arguments.source))
        return selectDisplay(display->number, screens);
    if (const auto* window = std::get_if<WindowArgument>(&arguments.source))
        return selectWindow(window->windowID, windows);
    return selectArea(std::get<AreaArgument>(arguments.source).rect, screens);
}

} // namespace keldra
