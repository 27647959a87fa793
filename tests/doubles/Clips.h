#pragma once

#include "project/EditorSegment.h"

namespace keldra::test {

inline QUuid id(int number) {
    return QUuid(QString("00000000-0000-4000-8000-%1").arg(number, 12, 10, QChar('0')));
}

inline EditorSegment clip(int number, double start, double duration, qint64 row = 0) {
    EditorSegment segment;
    segment.id = id(number);
    segment.timelineStart = start;
    segment.duration = duration;
    segment.trackIndex = row;
    return segment;
}

} // namespace keldra::test
