#include "doubles/RandomProject.h"
#include "editing/EditorCommandManager.h"
#include "editing/EditorCommands.h"
#include "project/ProjectJson.h"
#include "project/Timeline.h"

#include <benchmark/benchmark.h>

// What the document costs at 10, 1,000 and 20,000 clips. Of these, everything but the JSON runs on the main thread.

namespace keldra {
namespace {

const QDateTime now = QDateTime::fromSecsSinceEpoch(1'000'000, Qt::UTC);

EditorProject projectOf(const benchmark::State& state) {
    return RandomProject(1).make(int(state.range(0)));
}

void encode(benchmark::State& state) {
    const EditorProject project = projectOf(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeProject(project));
}

void decode(benchmark::State& state) {
    const QByteArray json = *encodeProject(projectOf(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeProject(json));
}

void copyAndCompareShared(benchmark::State& state) {
    const EditorProject project = projectOf(state);
    for (auto _ : state) {
        const EditorProject copy = project;
        benchmark::DoNotOptimize(copy == project);
    }
}

void compareDetached(benchmark::State& state) {
    const EditorProject project = projectOf(state);
    EditorProject copy = project;
    copy.segments.detach();
    for (auto _ : state)
        benchmark::DoNotOptimize(copy == project);
}

void orderVisible(benchmark::State& state) {
    const EditorProject project = projectOf(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(visibleSegments(project));
}

void findActive(benchmark::State& state) {
    const EditorProject project = projectOf(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(activeSegment(project, 100));
}

void editAndUndo(benchmark::State& state) {
    EditorProject project = projectOf(state);
    project.frameRate = 60;
    EditorSegment& clip = project.segments.last();
    clip.trackIndex = 99;
    clip.duration = 10;
    const double middle = clip.timelineStart + 5;
    EditorCommandManager history;
    for (auto _ : state) {
        history.execute(*splitSegmentCommand(project, middle), project, now);
        history.undo(project, now);
    }
}

#define KELDRA_SIZES Arg(10)->Arg(1'000)->Arg(20'000)->Unit(benchmark::kMicrosecond)
BENCHMARK(encode)->KELDRA_SIZES;
BENCHMARK(decode)->KELDRA_SIZES;
BENCHMARK(copyAndCompareShared)->KELDRA_SIZES;
BENCHMARK(compareDetached)->KELDRA_SIZES;
BENCHMARK(orderVisible)->KELDRA_SIZES;
BENCHMARK(findActive)->KELDRA_SIZES;
BENCHMARK(editAndUndo)->KELDRA_SIZES;

} // namespace
} // namespace keldra

BENCHMARK_MAIN();
