// The manual, which is committed.
#include "helper/helper_manual.h"

#include "support/committed_document.h"

namespace corvane {
namespace {

TEST(HelperDocument, TheManualIsMadeFromTheHelp) {
  expectCommitted("packaging/man/CorvaneRootHelper.8", helperManual());
}

}  // namespace
}  // namespace corvane
