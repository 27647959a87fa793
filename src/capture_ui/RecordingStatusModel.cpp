#include "capture_ui/RecordingStatusModel.h"

// The signals are written by moc, which wants a source file here.
