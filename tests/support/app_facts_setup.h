// Facts under a configuration of the test's own.
#pragma once

#include <memory>
#include <utility>

#include "workflow/app_facts.h"

namespace corvane::testing {

template <class Change>
void configure(AppFacts& facts, Change change) {
  CorvaneConfiguration config = facts.config;
  change(config);
  facts.config = SharedConfiguration(std::make_shared<const CorvaneConfiguration>(std::move(config)));
}

}  // namespace corvane::testing
