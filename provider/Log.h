// SPDX-License-Identifier: Apache-2.0
// The log of the platform, under the tag of the provider object.
#pragma once

#include <log/log.h>

#undef LOG_TAG  // Null, where nobody has set it.
#define LOG_TAG "OrvoCameraServiceImpl"

// A number among the arguments of a line is part of its text: log readers search for it.
