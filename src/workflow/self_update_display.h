// How the row of the program's own label words its versions.
#pragma once

#include "core/records/app_info.h"

namespace corvane {

// Main thread.
class SelfUpdateDisplay {
 public:
  virtual ~SelfUpdateDisplay() = default;
  // A new inventory came. Looks the versions up and answers nobody: rows read what it found.
  virtual void lookUp(const Apps& apps) = 0;
};

}  // namespace corvane
