#include "core/discovery/label_fragment.h"
#include "fuzz/hostile_inputs.h"

namespace corvane::testing {

namespace {

bool isLabelLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-'; }

bool taken(const std::string& bytes) {
  const auto fragment = parseLabelFragment("file", bytes);
  if (!fragment) {
    EXPECT_EQ(fragment.error().domain, "CRVLabels");
    EXPECT_FALSE(fragment.error().text.empty());
    return false;
  }
  EXPECT_FALSE(fragment->labels.empty());
  for (const auto& label : fragment->labels) EXPECT_TRUE(std::ranges::all_of(label.text, isLabelLetter)) << label.text;
  EXPECT_TRUE(fragment->name || fragment->isComputed(LabelVariable::name));
  EXPECT_FALSE(fragment->name && fragment->isComputed(LabelVariable::name)) << "known or computed, never both";
  for (const auto* value : {&fragment->name, &fragment->type, &fragment->appName, &fragment->packageID,
                            &fragment->expectedTeamID, &fragment->versionKey, &fragment->targetDir,
                            &fragment->folderName, &fragment->updateTool, &fragment->appNewVersion}) {
    EXPECT_LE(value->value_or("").size(), kLabelFragmentLimit) << "filling in never blows a value up";
  }
  EXPECT_NE(fragment->bundlePath(), "");
  EXPECT_FALSE(fragment->installFolder().empty());
  EXPECT_FALSE(fragment->installedVersionKey().empty());
  return true;
}

}  // namespace

TEST(LabelFragmentFuzz, theCorpusIsJudgedRightly) { replay(corpusOf("label_fragment"), taken); }

TEST(LabelFragmentFuzz, damageNeverCrashesAndWhatIsReadHoldsTogether) {
  HostileInputs inputs(goodOnes(corpusOf("label_fragment")),
                       {"$(",       ")",       "`",    "\"",  "'",     "$'",        "${",    "}",  "{",  "(",
                        "((",       "))",      "[[",   "]]",  ";;",    "case x in", "esac",  "if", "fi", "<<EOF\n",
                        "<<-'E'\n", "\nEOF\n", "\\\n", "#",   "name=", "appName=",  "$name", "+=", "=(", "function f {",
                        "f() {",    "|",       "&&",   "<<<", "<(",    "\r\n",      "\xff"});
  bombard(std::move(inputs), 3000, 100, taken);
}

TEST(LabelFragmentFuzz, nestingIsBounded) {
  for (const std::string_view open : {"$(", "\"$(", "`", "{ ", "( ", "${x:-", "case x in y) ", "if true; then ",
                                      "f() { ", "[[ ", "x=( ", "$((", "<(", "cat <<E\n"}) {
    std::string text = "quill)\nname=Quill\n";
    while (text.size() < kLabelFragmentLimit - 16) text += open;
    taken(text + "\n;;\n");
  }
}

}  // namespace corvane::testing
