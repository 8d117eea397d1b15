#pragma once
// Small helpers shared by the core tests.

#include <gtest/gtest.h>

#include "core/ov_time.hpp"

namespace orvane::core::testing_support {

inline OVTime secs(double s) { return OVTime::fromSeconds(s); }

// A copy hashes alike; the change makes the value and its hash differ.
template <class T, class Change>
void expectHashSees(const T& base, Change change) {
  T copy = base;
  EXPECT_EQ(hashValue(copy), hashValue(base));
  change(copy);
  EXPECT_NE(copy, base);
  EXPECT_NE(hashValue(copy), hashValue(base));
}

}  // namespace orvane::core::testing_support
