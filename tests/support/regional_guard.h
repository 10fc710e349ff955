// Sets the regional settings for one test and puts the earlier ones back.
#pragma once

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

}  // namespace ketrova
