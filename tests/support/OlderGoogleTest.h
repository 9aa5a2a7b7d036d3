// SPDX-License-Identifier: Apache-2.0
// GoogleTest's present names, where a device tree has one from before they were given.
#pragma once

#include <gtest/gtest.h>

#ifndef INSTANTIATE_TEST_SUITE_P
#define INSTANTIATE_TEST_SUITE_P INSTANTIATE_TEST_CASE_P
#endif

#ifndef TYPED_TEST_SUITE
#define TYPED_TEST_SUITE TYPED_TEST_CASE
#endif

// What cannot skip fails, with the text that says what to do.
#ifndef GTEST_SKIP
#define GTEST_SKIP() FAIL()
#endif
