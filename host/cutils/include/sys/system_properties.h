// SPDX-License-Identifier: Apache-2.0
// The sizes of property names and values that <cutils/properties.h> is written in terms of.

#pragma once

/** Both count the terminating NUL. */
#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92
