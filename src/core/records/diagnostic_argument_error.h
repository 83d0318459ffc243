// What may be wrong with the arguments that order a diagnostic bundle.
#pragma once

#include "base/error.h"
#include "base/localized.h"

namespace corvane {

struct DiagnosticArgumentError {
  static constexpr const char* domain = "CRVDiagnosticArguments";
  static constexpr int missingOutputPathCode = 1;

  [[nodiscard]] static Error missingOutputPath() {
    return {.domain = domain,
            .code = missingOutputPathCode,
            .text = localized("Missing path after --output. Example: --generate-diagnostic-bundle --output /var/tmp")};
  }
};

}  // namespace corvane
