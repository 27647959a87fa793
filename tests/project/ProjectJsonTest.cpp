#include "project/ProjectJson.h"

#include "doubles/RandomProject.h"
#include "project/FreshProject.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace keldra {
namespace {

EditorProject sampleProject() {
    SourceFacts facts;
    facts.durationSeconds = 12.25;
    facts.video = SourceFacts::Video{60, {1920, 1080}, {}};
    EditorProject project = makeFreshProject(QUrl::fromLocalFile("/movies/a #1 100%.mov"), true, facts,
                                             QDateTime({2024, 5, 6}, {7, 8, 9}, Qt::UTC));
    project.id = QUuid("6f9619ff-8b86-d011-b42d-00cf4fc964ff");
    return project;
}

/// What it was with the value at that path replaced or, for an undefined value, removed.
QJsonValue changed(const QJsonValue& whole, QStringList path, const QJsonValue& value) {
    if (path.isEmpty())
        return value;
    const QString step = path.takeFirst();
    if (whole.isArray()) {
        QJsonArray array = whole.toArray();
        array[step.toInt()] = changed(array[step.toInt()], path, value);
        return array;
    }
    QJsonObject object = whole.toObject();
    object.insert(step, changed(object[step], path, value));
    return object;
}

QByteArray changed(const QByteArray& json, const QStringList& path, const QJsonValue& value) {
    return QJsonDocument(changed(QJsonDocument::fromJson(json).object(), path, value).toObject()).toJson();
}

std::string failureOf(const QByteArray& json) {
    const auto decoded = decodeProject(json);
    return decoded ? "decoded" : decoded.error().message;
}

TEST(ProjectJson, WritesTheDescribedText) {
    EditorProject project = sampleProject();
    const QUuid clip("00000000-0000-0000-0000-0000000000ab");
    project.segments.first() = {};
    project.segments.first().id = clip;
    project.segments.first().duration = 0.1;
    project.segments.first().trackIndex = std::numeric_limits<qint64>::max();
    project.segments.first().mediaKind = EditorMediaKind::image;
    project.tracks.reset();
    project.zoomBlocks = QList<ZoomBlock>{{clip, 1, 3, 2, {0.25, 1}, 0.6}};
    project.canvas = CanvasStyle{};
    project.canvas->size = CanvasCustomSize{1921, 1081};
    const QByteArray text = encodeProject(project).value();
    const QByteArray clipID = R"("00000000-0000-0000-0000-0000000000AB")";
    EXPECT_EQ(QJsonDocument::fromJson(text).toJson(QJsonDocument::Compact),
              R"({"canvas":{"background":{"color":{"_0":{"alpha":1,"blue":0,"green":0,"red":0}}},)"
              R"("paddingFraction":{"bottom":0,"left":0,"right":0,"top":0},)"
              R"("size":{"custom":{"height":1081,"width":1921}},"videoFit":"fit"},)"
              R"("canvasHeight":1080,"canvasWidth":1920,"createdAt":"2024-05-06T07:08:09Z","frameRate":60,)"
              R"("hasLiveClickTrack":true,"id":"6F9619FF-8B86-D011-B42D-00CF4FC964FF",)"
              R"("segments":[{"duration":0.1,"id":)" +
                  clipID +
                  R"(,"mediaKind":"image","sourceStart":0,"timelineStart":0,"trackIndex":9223372036854775807}],)"
                  R"("sourceDuration":12.25,"sourceURL":"file:///movies/a%20%231%20100%25.mov",)"
                  R"("updatedAt":"2024-05-06T07:08:09Z","zoomBlocks":[{"duration":3,"focus":{"x":0.25,"y":1},"id":)" +
                  clipID + R"(,"rampDuration":0.6,"scale":2,"timelineStart":1}]})");
    EXPECT_EQ(text, QJsonDocument::fromJson(text).toJson(QJsonDocument::Indented)) << "sorted, a value a line";
}

TEST(ProjectJson, OldFilesLoadAndAreWrittenBackAsTheyWere) {
    EditorProject bare = sampleProject();
    bare.tracks.reset();
    bare.canvas.reset();
    bare.zoomBlocks.reset();
    bare.hasLiveClickTrack.reset();
    const QByteArray json = encodeProject(bare).value();
    for (const char* key : {"tracks", "canvas", "zoomBlocks", "hasLiveClickTrack", "clickSoundVolume"})
        EXPECT_FALSE(json.contains(QByteArray("\"") + key + '"')) << key;
    EXPECT_EQ(decodeProject(json).value(), bare);

    const CanvasStyle plain = decodeCanvasStyle("{}").value();
    EXPECT_EQ(plain, CanvasStyle{});
    EXPECT_EQ(std::get<RGBAColor>(plain.background), (RGBAColor{0, 0, 0, 1}));
    const CanvasStyle early = decodeCanvasStyle(R"({"background":{"gradient":{"_0":{"kind":"radial","angleDegrees":30,
        "startColor":{"red":1,"green":2,"blue":3,"alpha":4},"endColor":{"red":0,"green":0,"blue":0,"alpha":0}}}}})")
                                  .value();
    EXPECT_EQ(std::get<CanvasGradient>(early.background),
              (CanvasGradient{CanvasGradient::Kind::radial, {1, 2, 3, 4}, {0, 0, 0, 0}, 30, 0}));
}

TEST(ProjectJson, FailuresNameTheKeyInOneLine) {
    EditorProject project = sampleProject();
    project.segments.append(project.segments.first());
    project.zoomBlocks = QList<ZoomBlock>{{}};
    const QByteArray json = encodeProject(project).value();
    const QJsonObject color{{"red", 0}, {"green", 0}, {"blue", 0}, {"alpha", 0}};
    const QJsonObject colorCase{{"_0", color}};
    const QString wrongKeys = "Invalid number of keys found, expected one.";
    struct Row {
        QString path;
        QJsonValue value;
        QString message;
    };
    const Row rows[] = {
        {"frameRate", QJsonValue::Undefined, "frameRate: the key is missing"},
        {"frameRate", QJsonValue::Null, "frameRate: expected a number"},
        {"frameRate", "30", "frameRate: expected a number"},
        {"id", "6F9619FF-8B86-D011-B42D-00CF4FC964F", "id: expected a UUID"},
        {"id", "{6F9619FF-8B86-D011-B42D-00CF4FC964FF}", "id: expected a UUID"},
        {"sourceURL", "", "sourceURL: expected a URL"},
        {"createdAt", "2024-05-06T07:08:09.5Z", "createdAt: expected a date like 2024-01-31T12:00:00Z"},
        {"createdAt", "2024-02-30T07:08:09Z", "createdAt: expected a date like 2024-01-31T12:00:00Z"},
        {"createdAt", 12, "createdAt: expected a date like 2024-01-31T12:00:00Z"},
        {"segments", QJsonObject{}, "segments: expected an array"},
        {"segments/1", 3, "segments[1]: expected an object"},
        {"segments/1/duration", true, "segments[1].duration: expected a number"},
        {"segments/1/trackIndex", 1.5, "segments[1].trackIndex: expected a whole number"},
        {"segments/1/trackIndex", 1e300, "segments[1].trackIndex: expected a whole number"},
        {"segments/1/isMuted", 1, "segments[1].isMuted: expected true or false"},
        {"segments/1/displayName", 1, "segments[1].displayName: expected a string"},
        {"segments/1/mediaKind", "film", "segments[1].mediaKind: expected one of video, image, audio"},
        {"tracks/0/kind", "image", "tracks[0].kind: expected one of video, audio"},
        {"tracks/0/isMuted", QJsonValue::Undefined, "tracks[0].isMuted: the key is missing"},
        {"zoomBlocks/0/focus/y", QJsonValue::Undefined, "zoomBlocks[0].focus.y: the key is missing"},
        {"canvas", 1, "canvas: expected an object"},
        {"canvas/background", QJsonObject{}, "canvas.background: " + wrongKeys},
        {"canvas/background", QJsonObject{{"color", colorCase}, {"gradient", colorCase}},
         "canvas.background: " + wrongKeys},
        {"canvas/background", QJsonObject{{"video", colorCase}},
         "canvas.background: expected the key color or gradient or image"},
        {"canvas/background", QJsonObject{{"color", color}}, "canvas.background.color._0: the key is missing"},
        {"canvas/size", QJsonObject{}, "canvas.size: " + wrongKeys},
        {"canvas/size", QJsonObject{{"preset", QJsonObject{{"_0", "huge"}}}},
         "canvas.size.preset._0: expected one of landscape16x9, portrait9x16, square1x1, portrait4x5"},
        {"canvas/size", QJsonObject{{"custom", QJsonObject{{"width", 3}}}},
         "canvas.size.custom.height: the key is missing"},
        {"canvas/shadow", QJsonObject{}, "canvas.shadow.isEnabled: the key is missing"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(failureOf(changed(json, row.path.split('/'), row.value)), row.message.toStdString());
}

TEST(ProjectJson, ReadersAreLenientWhereFilesMayDiffer) {
    const EditorProject project = sampleProject();
    const QByteArray json = encodeProject(project).value();
    EXPECT_EQ(decodeProject(changed(json, {"somethingNew"}, 3)).value(), project);
    EXPECT_EQ(decodeProject(changed(json, {"id"}, "6f9619ff-8b86-d011-b42d-00cf4fc964ff")).value(), project);
    EXPECT_EQ(decodeProject(changed(json, {"clickSoundVolume"}, QJsonValue::Null)).value(), project);
    QByteArray doubled = json;
    doubled.insert(1, "\"frameRate\": 7,");
    EXPECT_EQ(decodeProject(doubled).value(), project);
}

TEST(ProjectJson, WhatIsNotFiniteCannotBeWritten) {
    EditorProject project = sampleProject();
    project.segments.first().volume = std::numeric_limits<double>::infinity();
    EXPECT_EQ(encodeProject(project).error().message, "segments[0].volume: the number is not finite");
    CanvasStyle style;
    style.background = CanvasImageBackground{QUrl("file:///a.png"), ContentFit::fit, std::nan(""), {}};
    EXPECT_EQ(encodeCanvasStyle(style).error().message, "background.image._0.blurRadius: the number is not finite");
}

/// Random projects that reach the far ends of the numbers.
class WildProject final : public RandomProject {
public:
    using RandomProject::RandomProject;
    double real(double, double) override {
        if (chance())
            return double(below(2000) - 1000) / 60;
        double value = 0;
        do {
            const quint64 bits = m_random();
            std::memcpy(&value, &bits, sizeof value);
        } while (!std::isfinite(value));
        return value;
    }
    qint64 whole(qint64, qint64) override { return qint64(m_random()) >> below(60); }
};

void checkRoundTrips(unsigned seed) {
    WildProject random(seed);
    for (int round = 0; round < 300; ++round) {
        const EditorProject project = random.make(random.below(4));
        const QByteArray json = encodeProject(project).value();
        const auto back = decodeProject(json);
        ASSERT_TRUE(back) << back.error().message << "\nseed " << seed << "\n" << json.constData();
        ASSERT_EQ(*back, project) << "seed " << seed << "\n" << json.constData();
        ASSERT_EQ(encodeProject(*back).value(), json) << "seed " << seed;
    }
}

TEST(ProjectJson, EveryProjectComesBackAsItWas) {
    checkRoundTrips(1);
}

TEST(ProjectJson, NumbersDoNotFollowTheLocale) {
    const EditorProject project = sampleProject();
    const QByteArray json = encodeProject(project).value();
    const QLocale before;
    const std::string beforeC = std::setlocale(LC_ALL, nullptr);
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    // The build makes this locale; ctest says where it lies.
    if (std::getenv("LOCPATH")) {
        ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8"));
    }
    EXPECT_EQ(encodeProject(project).value(), json);
    EXPECT_EQ(decodeProject(json).value(), project);
    checkRoundTrips(2);
    std::setlocale(LC_ALL, beforeC.c_str());
    QLocale::setDefault(before);
}

} // namespace
} // namespace keldra
