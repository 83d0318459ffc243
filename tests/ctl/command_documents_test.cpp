// The manual and the completions, which are committed.
#include "ctl/command_documents.h"

#include "support/committed_document.h"

namespace corvane::ctl {
namespace {

TEST(CommandDocuments, TheOnesThatAreCommittedAreMadeFromTheCommands) {
  expectCommitted("packaging/man/corvanectl.1", manualPage());
  expectCommitted("packaging/completion/corvanectl.bash", bashCompletion());
  expectCommitted("packaging/completion/_corvanectl", zshCompletion());
}

}  // namespace
}  // namespace corvane::ctl
