// Included before everything else of the test framework on Windows: its death tests need threads,
// which it has been told not to use there.
#pragma once

#include <gtest/internal/gtest-port.h>
#undef GTEST_HAS_DEATH_TEST
