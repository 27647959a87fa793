#include "cli/SourcesCommand.h"

#include "async/CoTry.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace keldra {
namespace {

int pixels(double points, double scale) {
    return int(std::lround(points * scale));
}

QJsonObject displayRow(const Screen& screen) {
    return {{"id", qint64(screen.number)},
            {"name", screen.name},
            {"width", pixels(screen.frame.width(), screen.backingScaleFactor)},
            {"height", pixels(screen.frame.height(), screen.backingScaleFactor)}};
}

QJsonObject windowRow(const WindowInfo& window) {
    // The command line's desktop has the scale 1: points are pixels.
    return {{"id", qint64(window.windowID)},
            {"title", window.title},
            {"owner", window.owner},
            {"width", pixels(window.frame.width(), 1)},
            {"height", pixels(window.frame.height(), 1)}};
}

QJsonArray deviceRows(const Platform& platform, CaptureDeviceKind kind) {
    QJsonArray rows;
    if (platform.devices)
        for (const CaptureDeviceOption& device : platform.devices->devices(kind))
            rows.append(QJsonObject{{"id", device.id}, {"name", device.name}});
    return rows;
}

QString line(const QJsonObject& row, const QString& words) {
    return QStringLiteral("  %1  %2x%3  %4\n")
        .arg(row["id"].toInteger(), 10)
        .arg(row["width"].toInt(), 5)
        .arg(row["height"].toInt(), -5)
        .arg(words);
}

QString deviceTable(const QString& title, const QJsonValue& devices) {
    QString text = title + u'\n';
    for (const QJsonValue& row : devices.toArray())
        text += QStringLiteral("  %1  %2\n").arg(row["id"].toString(), row["name"].toString());
    return text;
}

QString table(const QJsonObject& sources) {
    QString text = QStringLiteral("Displays\n");
    for (const QJsonValue& row : sources["displays"].toArray())
        text += line(row.toObject(), row["name"].toString());
    text += QStringLiteral("Windows\n");
    for (const QJsonValue& row : sources["windows"].toArray())
        text += line(row.toObject(), QStringLiteral("%1 (%2)").arg(row["title"].toString(), row["owner"].toString()));
    text += deviceTable(QStringLiteral("Cameras"), sources["cameras"]);
    text += deviceTable(QStringLiteral("Microphones"), sources["microphones"]);
    return text;
}

} // namespace

QCoro::Task<Result<void>> runSources(const CommandContext& context, QStringList words) {
    CO_TRY_LET(const Arguments arguments, parseArguments(words, {{"--json", OptionValue::none}}));
    if (!arguments.positional.isEmpty())
        co_return fail(
            usageError(QStringLiteral("sources takes no argument \"%1\"").arg(arguments.positional.first())));
    CO_TRY_LET(const Platform platform, context.makePlatform());

    QJsonArray displays;
    for (const Screen& screen : platform.screens->screens())
        displays.append(displayRow(screen));
    QJsonArray windows;
    for (const WindowInfo& window : platform.windows->windows())
        if (window.layer == 0 && !window.isOwn)
            windows.append(windowRow(window));

    const QJsonObject sources{{"displays", displays},
                              {"windows", windows},
                              {"cameras", deviceRows(platform, CaptureDeviceKind::camera)},
                              {"microphones", deviceRows(platform, CaptureDeviceKind::microphone)}};
    const QByteArray text = arguments.has("--json") ? QJsonDocument(sources).toJson(QJsonDocument::Compact) + '\n'
                                                    : table(sources).toLocal8Bit();
    if (!writeResult(text))
        co_return fail(unwritableOutput());
    co_return {};
}

} // namespace keldra
