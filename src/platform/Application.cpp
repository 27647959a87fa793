#include "platform/Application.h"

// The signals are written by moc, which wants a source file here.
