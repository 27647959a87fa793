#include "audio/AudioLevelAnalyzer.h"
#include <gtest/gtest.h>
