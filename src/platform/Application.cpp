#include "platform/Application.h"
