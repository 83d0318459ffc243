// The options string on its whole way: from a preference file through the real daemon to what the tool makes of it.
#include "base/plist.h"
#include "helper/helper_process.h"

namespace corvane {
namespace {

// Keeps its arguments and evaluates them twice, as the tool does.
constexpr const char* kEvaluatingTool = R"(#!/bin/zsh -f
root="${0%/Library/*}"
printf '%s\0' "$@" > "$root/tool-arguments"
cd "$root/evaluated"
for pass in 1 2; do
  for argument in "$@"; do
    if [[ $argument == *=* ]]; then eval $argument; fi
  done
done
printf '%s\0' "$PROXY" "$LOGO" "$downloadURL" "$expectedTeamID" > "$root/tool-values"
)";

class HostileOptions : public HelperProcess {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists("/bin/zsh")) GTEST_SKIP() << "no zsh here";
    HelperProcess::SetUp();
    std::filesystem::create_directory(folder_.path() / "evaluated");
    std::ofstream(places_.installomatorScript()) << kEvaluatingTool;
  }
  static void prefer(const std::filesystem::path& file, const std::string& options) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << writePlist(PlistDict{{"InstallomatorOptions", options}}, PlistFormat::binary).value();
  }
  // The pieces of a file that are ended by NUL.
  [[nodiscard]] std::vector<std::string> pieces(const char* name) const {
    std::vector<std::string> all;
    std::ifstream file(folder_.path() / name, std::ios::binary);
    for (std::string piece; std::getline(file, piece, '\0');) all.push_back(piece);
    return all;
  }
  void patch() const { (void)ask(ask::StartPatching{.labels = {Label("broken")}, .alsoStageLabels = {}}); }
};

TEST_F(HostileOptions, ReachTheToolAsTextsThatNothingEvaluates) {
  const struct {
    std::string options;
    std::vector<std::string> arguments;  // behind the label and DEBUG
    std::string proxy;
    std::string logo;
  } rows[] = {
      {"PROXY=$(touch${IFS}x)", {"PROXY='$(touch${IFS}x)'"}, "$(touch${IFS}x)", ""},
      {"PROXY=`touch${IFS}x`", {"PROXY='`touch${IFS}x`'"}, "`touch${IFS}x`", ""},
      {"PROXY=';touch${IFS}x;' LOGO=a;touch${IFS}x",
       {"LOGO='a;touch${IFS}x'", R"(PROXY=''\'';touch${IFS}x;'\''')"},
       "';touch${IFS}x;'",
       "a;touch${IFS}x"},
      {R"(PROXY=\';touch${IFS}x;# LOGO=")",
       {"LOGO='\"'", R"(PROXY='\'\'';touch${IFS}x;#')"},
       R"(\';touch${IFS}x;#)",
       "\""},
      {"PROXY=a=$(touch${IFS}x) touch x ; $(touch${IFS}x)=1 a[$(touch${IFS}x)]=1",
       {"PROXY='a=$(touch${IFS}x)'"},
       "a=$(touch${IFS}x)",
       ""},
      {"downloadURL=http://evil expectedTeamID=EVIL PATH=/evil DEBUG=1 PROXY=p", {"PROXY='p'"}, "p", ""},
  };
  for (const auto& row : rows) {
    prefer(places_.userPreferencesPath(), row.options);
    patch();
    std::vector<std::string> expected{"broken", "DEBUG=0"};
    expected.insert(expected.end(), row.arguments.begin(), row.arguments.end());
    EXPECT_EQ(pieces("tool-arguments"), expected) << row.options;
    EXPECT_EQ(pieces("tool-values"), (std::vector<std::string>{row.proxy, row.logo, "", ""})) << row.options;
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path() / "evaluated")) << row.options;
  }
  EXPECT_NE(log().find("Installomator option downloadURL is left out"), std::string::npos);
}

TEST_F(HostileOptions, OnlyTheOrganisationMayOverrideALabel) {
  prefer(places_.userPreferencesPath(), "downloadURL=http://evil LOGO=user");
  prefer(places_.managedPreferencesPath(), "downloadURL=$(touch${IFS}x) expectedTeamID=OURS");
  patch();
  EXPECT_EQ(pieces("tool-values"), (std::vector<std::string>{"", "", "$(touch${IFS}x)", "OURS"}));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path() / "evaluated"));

  const auto managed = PlistDict{{"InstallomatorOptions", 7}};
  std::ofstream(places_.managedPreferencesPath()) << writePlist(managed, PlistFormat::binary).value();
  patch();
  EXPECT_EQ(pieces("tool-values"), (std::vector<std::string>{"", "user", "", ""}))
      << "a managed value of no use lends the user's nothing";
}

}  // namespace
}  // namespace corvane
