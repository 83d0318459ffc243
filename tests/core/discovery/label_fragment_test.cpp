#include "core/discovery/label_fragment.h"

#include "core/discovery/label_patterns.h"
#include "support/test.h"

namespace corvane {
namespace {

LabelFragment parsed(std::string_view text) {
  auto fragment = parseLabelFragment("file", text);
  EXPECT_TRUE(fragment) << (fragment ? "" : fragment.error().text) << "\n" << text;
  return fragment ? *fragment : LabelFragment{};
}

std::string withBody(std::string_view body) { return "quill)\nname=\"Quill\"\n" + std::string(body) + "\n;;\n"; }

TEST(LabelFragment, readsEveryFormOfHead) {
  struct Row {
    std::string_view head;
    std::vector<std::string> labels;
  };
  const Row rows[] = {
      {"quill)", {"quill"}},
      {"quill|\\\nquill-beta|\\\nquill_intl)", {"quill", "quill-beta", "quill_intl"}},
      {"quill | quillpro|quill7)", {"quill", "quillpro", "quill7"}},
      {"    quill)", {"quill"}},
      {"\t(quill|\n  pen)", {"quill", "pen"}},
      {"# a remark (with brackets)\n\nquill)", {"quill"}},
      {"quill|quill|pen)", {"quill", "pen"}},
      {"Quill|pen*|feather)", {"feather"}},
  };
  for (const auto& row : rows) {
    Labels expected;
    for (const auto& text : row.labels) expected.emplace_back(text);
    EXPECT_EQ(parsed(std::string(row.head) + "\nname=X\n;;\n").labels, expected) << row.head;
  }
}

TEST(LabelFragment, takesLiteralsInEveryQuoting) {
  const auto fragment = parsed(R"--(quill)
    name='Quill "Pro"'   # the name
    type=pkgInDmg; versionKey="CFBundleVersion"
    appName="Quill \"\$5\" \d.app"
    packageID=org.example.quill
    expectedTeamID="Software Update"
    targetDir=/Applications/Quill\ Tools
    blockingProcesses=( "Quill" 'Quill Helper' # an inner remark
       Bare )
    updateTool="/Library/Quill/"'update'
    appNewVersion="two
lines"
    downloadURL=$(curl -fs "https://example.org/$(arch)" | grep -o "it's ) here" | sed 's/)//')
    ;;)--");
  EXPECT_EQ(fragment.name, "Quill \"Pro\"");
  EXPECT_EQ(fragment.type, "pkgInDmg");
  EXPECT_EQ(fragment.versionKey, "CFBundleVersion");
  EXPECT_EQ(fragment.appName, "Quill \"$5\" \\d.app");
  EXPECT_EQ(fragment.packageID, "org.example.quill");
  EXPECT_EQ(fragment.expectedTeamID, "Software Update");
  EXPECT_EQ(fragment.targetDir, "/Applications/Quill Tools");
  EXPECT_THAT(*fragment.blockingProcesses, ElementsAre("Quill", "Quill Helper", "Bare"));
  EXPECT_EQ(fragment.updateTool, "/Library/Quill/update");
  EXPECT_EQ(fragment.appNewVersion, "two\nlines");
  EXPECT_EQ(fragment.computed, 0U);
}

TEST(LabelFragment, fillsInOnlyWhatTheFragmentItselfSaysPlainly) {
  struct Row {
    std::string_view body;
    std::optional<std::string> appName;
    bool computed;
  };
  const Row rows[] = {
      {"folderName=\"Quill Tools\"\nappName=\"${folderName}/Quill.app\"", "Quill Tools/Quill.app", false},
      {"appName=\"$name 7.app\"", "Quill 7.app", false},
      {"appName=$name.app", "Quill.app", false},
      {"appName='$name.app'", "$name.app", false},
      {"year=$(date +%Y)\nappName=\"Quill $year.app\"", std::nullopt, true},
      {"x=1\nx=`date`\nappName=\"Quill $x.app\"", std::nullopt, true},
      {"appName=\"Quill ${name%l}.app\"", std::nullopt, true},
      {"appName=\"Quill $unknown.app\"", std::nullopt, true},
      {"appName=\"Quill $1.app\"", std::nullopt, true},
      {"appName=~/Quill.app", std::nullopt, true},
      {"appName=$'Quill\\x41.app'", std::nullopt, true},
      {"appName=$(basename \"$name\")", std::nullopt, true},
      {"if [[ $(arch) == arm64 ]]; then appName=\"Arm.app\"; else\n appName=Intel.app; fi", "Arm.app", false},
      {"[[ -n \"$x\" ]] && appName=\"$(date)\" || appName=Plain.app", "Plain.app", false},
      {"case $(arch) in\n arm64) appName=Arm.app\n ;;\n *) appName=Intel.app ;;\nesac", "Arm.app", false},
      {"# appName=Remark.app", std::nullopt, false},
      {"echo appName=Argument.app", std::nullopt, false},
      {"echo 'appName=Quoted.app\nappName=Inside.app'", std::nullopt, false},
      {"cat <<EOF >/dev/null\nappName=\"Here\nEOF\nappName=After.app", "After.app", false},
      {"read x <<< \"$name\"\nappName=After.app", "After.app", false},
      {"myAppName=No.app\nappName+=Tail", std::nullopt, false},
  };
  for (const auto& row : rows) {
    const auto fragment = parsed(withBody(row.body));
    EXPECT_EQ(fragment.appName, row.appName) << row.body;
    EXPECT_EQ(fragment.isComputed(LabelVariable::appName), row.computed) << row.body;
  }
}

TEST(LabelFragment, believesAVersionOnlyWhenNothingElseIsEverAssigned) {
  struct Row {
    std::string_view body;
    std::optional<std::string> version;
    bool computed;
  };
  const Row rows[] = {
      {"appNewVersion=\"7.1\"", "7.1", false},
      {"appNewVersion=", "", false},
      {"appNewVersion=7.1\nappNewVersion='7.1'", "7.1", false},
      {"appNewVersion=\"\"\nwhile [[ -z \"$appNewVersion\" ]]; do\n appNewVersion=$(curl x)\ndone", std::nullopt, true},
      {"appNewVersion=$(curl x)\n[[ -n $appNewVersion ]] || appNewVersion=1.0", std::nullopt, true},
      {"if [[ $(arch) == arm64 ]]; then appNewVersion=2; else\n appNewVersion=1; fi", std::nullopt, true},
      {"type=dmg", std::nullopt, false},
  };
  for (const auto& row : rows) {
    const auto fragment = parsed(withBody(row.body));
    EXPECT_EQ(fragment.appNewVersion, row.version) << row.body;
    EXPECT_EQ(fragment.isComputed(LabelVariable::appNewVersion), row.computed) << row.body;
  }
}

TEST(LabelFragment, passesOverFunctionsAndNoticesTheOwnVersionFunction) {
  for (const auto* body :
       {"appCustomVersion() { name=Inner; echo \"${x:-}}\" | awk '{print $2}' }\ntype=dmg",
        "appCustomVersion(){\n  # don't stop at this }\n  if true; then { versionKey=X; }; fi\n}\ntype=dmg",
        "function appCustomVersion {\n versionKey=X\n}\ntype=dmg"}) {
    const auto fragment = parsed(withBody(body));
    EXPECT_TRUE(fragment.declaresCustomVersion) << body;
    EXPECT_EQ(fragment.versionKey, std::nullopt) << body;
    EXPECT_EQ(fragment.type, "dmg") << body;
  }
  EXPECT_FALSE(parsed(withBody("echo appCustomVersion")).declaresCustomVersion);
}

TEST(LabelFragment, derivesWhatTheToolWouldAssume) {
  const auto plain = parsed(withBody("type=dmg"));
  EXPECT_EQ(plain.bundlePath(), "Quill.app");
  EXPECT_EQ(plain.installedVersionKey(), "CFBundleShortVersionString");
  EXPECT_EQ(plain.installFolder(), "/Applications");
  EXPECT_THAT(plain.blockingProcessNames(), ElementsAre("Quill"));
  EXPECT_EQ(parsed(withBody("type=pkgInDmg")).installFolder(), "/");
  EXPECT_EQ(parsed(withBody("appName=$(x)")).bundlePath(), std::nullopt);
  EXPECT_TRUE(parsed(withBody("blockingProcesses=( NONE )")).blockingProcessNames().empty());
  EXPECT_TRUE(parsed(withBody("blockingProcesses=NONE")).blockingProcessNames().empty());
  EXPECT_TRUE(parsed(withBody("blockingProcesses=( $(pgrep x) )")).isComputed(LabelVariable::blockingProcesses));
}

TEST(LabelFragment, damagedOnesAreRefusedWithAReason) {
  const auto deep = [] {
    std::string text = "quill)\nname=";
    for (int i = 0; i < 5000; ++i) text += "\"$(";
    return text + "\n;;\n";
  }();
  const auto doubling = [] {
    std::string text = "quill)\nname=Quill\na0=xxxxxxxxxxxxxxxx\n";
    for (int i = 1; i < 60; ++i)
      text += "a" + std::to_string(i) + "=$a" + std::to_string(i - 1) + "$a" + std::to_string(i - 1) + "\n";
    return text + "appName=$a59\n;;\n";
  }();
  const auto many = [] {
    std::string text = "quill)\nname=Quill\n";
    for (int i = 0; i <= 1000; ++i) text += "v" + std::to_string(i) + "=1\n";
    return text + ";;\n";
  }();
  const std::pair<std::string, std::string_view> rows[] = {
      {"", "head is never closed"},
      {"quill\nname=Quill\n;;", "head is never closed"},
      {"*)\nname=Quill\n;;", "names no label"},
      {"quill)\nname=Quill\n", "no closing"},
      {"quill)\nname=\"Quill\n;;", "quote is never closed"},
      {"quill)\nname='Quill\n;;", "quote is never closed"},
      {"quill)\nname=Quill\nx=`date\n;;", "back-quote is never closed"},
      {"quill)\nname=Quill\nx=$(date\n;;", "bracket is never closed"},
      {"quill)\nname=Quill\nblockingProcesses=( A\n;;", "list is never closed"},
      {"quill)\nname=Quill\nf() {\n;;", "brace is never closed"},
      {"quill)\nname=Quill\n[[ a == b\n;;", "test is never closed"},
      {"quill)\nname=Quill\ncat <<EOF\n;;", "here-document is never closed"},
      {"quill)\ntype=dmg\n;;", "sets no name"},
      {std::string("quill)\nname=Qu\0ill\n;;", 22), "NUL"},
      {"quill)\nname=Quill\n;;" + std::string(kLabelFragmentLimit, ' '), "too large"},
      {deep, "nests too deeply"},
      {many, "too many variables"},
  };
  for (const auto& [text, reason] : rows) {
    const auto fragment = parseLabelFragment("file", text);
    ASSERT_FALSE(fragment) << text.substr(0, 80);
    EXPECT_THAT(fragment.error().text, HasSubstr(std::string(reason)));
    EXPECT_EQ(fragment.error().domain, "CRVLabels");
  }
  EXPECT_TRUE(parsed(doubling).isComputed(LabelVariable::appName));
}

TEST(LabelPatterns, matchWithWildcardsInEitherCase) {
  using Pairs = std::vector<std::pair<std::string_view, std::string_view>>;
  const Pairs fits = {{"quill", "quill"},    {"Quill", "quill"},      {"quill*", "quill"}, {"quill?", "quill7"},
                      {"*pro", "quillpro"},  {"q*l*p?o", "quillpro"}, {"*", "quill"},      {"*", ""},
                      {" quill\n", "quill"}, {"*ill*", "quillpro"},   {"**", "q"}};
  const Pairs others = {{"quill", "quillpro"}, {"quill?", "quill"}, {"", ""}, {"?", ""}, {"q*z", "quill"}};
  for (const auto& [pattern, text] : fits) EXPECT_TRUE(matchesLabelPattern(pattern, text)) << pattern << " " << text;
  for (const auto& [pattern, text] : others) EXPECT_FALSE(matchesLabelPattern(pattern, text)) << pattern << " " << text;
  const std::string many(2000, 'a');
  EXPECT_FALSE(matchesLabelPattern("*a*a*a*a*a*a*a*a*b", many));
}

}  // namespace
}  // namespace corvane
