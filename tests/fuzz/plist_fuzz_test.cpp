#include "base/plist.h"
#include "fuzz/hostile_inputs.h"

namespace corvane::testing {

namespace {

// What was read can be written and comes back the same; the first writing may lose what a form has no word for.
bool taken(const std::string& bytes) {
  const auto document = parsePlist(bytes);
  if (!document) {
    EXPECT_EQ(document.error().domain, "CRVPlist");
    EXPECT_FALSE(document.error().text.empty());
    return false;
  }
  for (const auto format : {PlistFormat::xml, PlistFormat::binary}) {
    const auto once = writePlist(document->root, format);
    EXPECT_TRUE(once);
    const auto again = parsePlist(once.value_or(""));
    EXPECT_TRUE(again && writePlist(again->root, format).value_or("") == once.value_or("")) << once.value_or("");
  }
  return true;
}

}  // namespace

TEST(PlistFuzz, theCorpusIsJudgedRightly) { replay(corpusOf("plist"), taken); }

TEST(PlistFuzz, damageNeverCrashesAndWhatIsReadCanBeWritten) {
  HostileInputs inputs(
      goodOnes(corpusOf("plist")),
      {"<dict>",    "</dict>",   "<array>",  "</array>",   "<key>", "</key>", "<string>", "</string>",
       "<data>",    "<integer>", "<date>",   "<real>",     "nan",   "1e999",  "<!--",     "-->",
       "<![CDATA[", "]]>",       "&#x0;",    "&#x110000;", "&lt;",  "&",      "<?",       "<!DOCTYPE [",
       "\xd1",      "\xdf\x13",  "\xa1\x00", "\x80",       "\xff"});
  bombard(std::move(inputs), 2000, 100, taken);
}

}  // namespace corvane::testing
