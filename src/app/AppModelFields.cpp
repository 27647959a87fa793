#include "app/AppModelFields.h"

// The signals are written by moc, which wants a source file here.
