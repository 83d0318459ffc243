// The program's name as the organisation wants it shown.
#pragma once

#include <string>
#include <string_view>

#include "core/preferences/configuration.h"

namespace corvane {

// A value, built where a text is made. Any thread.
class AppDisplayTitle {
 public:
  explicit AppDisplayTitle(const CorvaneConfiguration& config) : AppDisplayTitle(config.appTitle) {}
  // An empty or blank title counts as "Corvane".
  explicit AppDisplayTitle(std::string_view title);

  [[nodiscard]] const std::string& current() const { return title_; }

  // The text with the configured title for every word "Corvane". File names, paths and identifiers that hold
  // the word ("Corvane.app", "org.corvane.Corvane") stay as they are.
  [[nodiscard]] std::string userFacing(std::string_view text) const;

 private:
  std::string title_;
};

}  // namespace corvane
