// Sets the regional settings for one test and puts the earlier ones back.
#pragma once

#include <gtest/gtest.h>

#include "support/regional.h"

namespace ketrova {

class RegionalGuard {
 public:
  explicit RegionalGuard(const RegionalSettings& settings) : saved_(Regional()) {
    SetRegional(settings);
  }
  ~RegionalGuard() { SetRegional(saved_); }
  RegionalGuard(const RegionalGuard&) = delete;
  RegionalGuard& operator=(const RegionalGuard&) = delete;

 private:
  RegionalSettings saved_;
};

// A test under the German settings, those the program is mostly used with.
class GermanSettingsTest : public ::testing::Test {
 protected:
  RegionalGuard german_{GermanRegional()};
};

}  // namespace ketrova
