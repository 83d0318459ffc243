#include "helper/brief_labels.h"

#include <fmt/format.h>

namespace corvane {

std::string brief(const Labels& labels) {
  if (labels.size() <= kLabelsInALine) return joined(labels);
  const Labels first(labels.begin(), labels.begin() + kLabelsInALine);
  return fmt::format("{} and {} more", joined(first), labels.size() - kLabelsInALine);
}

}  // namespace corvane
