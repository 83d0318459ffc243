// The manual, which is committed.
#include "app/application_manual.h"

#include "support/committed_document.h"

namespace corvane {
namespace {

TEST(ApplicationDocument, TheManualIsMadeFromTheUsageText) {
  expectCommitted("packaging/man/Corvane.1", applicationManual());
}

}  // namespace
}  // namespace corvane
