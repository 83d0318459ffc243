#include "base/manual_page.h"

#include "support/test.h"

namespace corvane {
namespace {

using ::testing::HasSubstr;

TEST(ManualPage, TextsNeverBecomeCommandsAndKeepWhatCanBeTyped) {
  ManualPage page("tool", 1, "a tool", "by hand");
  page.heading("OPTIONS").verbatim(".hidden `a'\n\n'x\\n --~^\n").paragraph("...");
  EXPECT_THAT(page.text(),
              HasSubstr("\n.SH OPTIONS\n.nf\n\\&.hidden \\(gaa\\(aq\n.sp\n\\(aqx\\en \\-\\-\\(ti\\(ha\n.fi\n"
                        ".PP\n\\&...\n"));
}

}  // namespace
}  // namespace corvane
