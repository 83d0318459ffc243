// The batch job's words, exit codes and paths.
#include "app/diagnostic_job.h"

#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

std::optional<std::filesystem::path> homeOf(std::string_view user) {
  if (user.empty()) return "/Users/ada";
  return user == "grace" ? std::optional<std::filesystem::path>("/Users/grace") : std::nullopt;
}

struct DiagnosticJobTest : ::testing::Test {
  int run(std::vector<std::string_view> arguments) {
    out.clear();
    err.clear();
    asked.clear();
    arguments.insert(arguments.begin(), "--generate-diagnostic-bundle");
    return runDiagnosticJob(arguments, {.title = "Contoso Updates",
                                        .homeOf = homeOf,
                                        .current = "/work",
                                        .terminal = terminal,
                                        .write =
                                            [this](std::filesystem::path output, auto done) {
                                              asked = output.string();
                                              answer ? done(*answer) : done.abandon();
                                            },
                                        .pump =
                                            [this](const auto& done, Duration limit) {
                                              waited = limit;
                                              return done() ? Waited::done : ending;
                                            },
                                        .out = [this](std::string_view text) { out += text; },
                                        .err = [this](std::string_view text) { err += text; }});
  }

  testing::TemporaryFolder disk;
  std::filesystem::path zip = disk.write("x.zip", std::string(842'600, 'x'));
  std::optional<Result<std::filesystem::path>> answer = zip;
  bool terminal = false;
  Waited ending = Waited::tooLong;  // of a wait without an answer
  Duration waited{};
  std::string asked;
  std::string out;
  std::string err;
};

TEST_F(DiagnosticJobTest, PrintsThePathAndTellsOfItsProgressOnlyWhereItIsWanted) {
  EXPECT_EQ(run({}), 0);
  EXPECT_EQ(asked, "/var/tmp");
  EXPECT_EQ(out, zip.string() + "\n");
  EXPECT_EQ(err, "");
  const auto progress =
      "Contoso Updates: Generating diagnostic bundle …\n"
      "Contoso Updates: Diagnostic bundle saved (843 KB)\n"
      "Contoso Updates: Attach this file to your GitHub issue or support request.\n";
  EXPECT_EQ(run({"--verbose", "--output", "~/bundles/"}), 0);
  EXPECT_EQ(asked, "/Users/ada/bundles");
  EXPECT_EQ(err, progress);
  terminal = true;
  EXPECT_EQ(run({"--output", "x/../out.ZIP"}), 0);
  EXPECT_EQ(asked, "/work/out.ZIP");
  EXPECT_EQ(err, progress);
  EXPECT_EQ(out, zip.string() + "\n");
}

TEST_F(DiagnosticJobTest, FailsWithALineAndNoPath) {
  const std::string missing =
      "Contoso Updates: Missing path after --output. Example: --generate-diagnostic-bundle --output /var/tmp\n";
  for (const auto& arguments :
       {std::vector<std::string_view>{"--output"}, {"--output", "--verbose"}, {"--output", ""}}) {
    EXPECT_EQ(run(arguments), 1);
    EXPECT_EQ(err, missing);
    EXPECT_EQ(asked + out, "");
  }
  answer = failure("CRVDiagnosticBundle", 2, "zip exited with code 14.");
  EXPECT_EQ(run({"--output", "/out"}), 1);
  EXPECT_EQ(err, "Contoso Updates: Unable to write diagnostic bundle to /out: zip exited with code 14.\n");
  answer.reset();
  EXPECT_EQ(run({}), 1);
  EXPECT_EQ(waited, 120s);
  EXPECT_EQ(err,
            "Contoso Updates: Unable to write diagnostic bundle to /var/tmp: "
            "Timed out generating the diagnostic bundle.\n");
  ending = Waited::interrupted;
  EXPECT_EQ(run({}), 1);
  EXPECT_EQ(err,
            "Contoso Updates: Unable to write diagnostic bundle to /var/tmp: The diagnostic bundle was given up.\n");
  EXPECT_EQ(out, "");
}

TEST(StandardizedPath, ExpandsATildeAndCountsFromTheWorkingFolder) {
  const std::pair<const char*, const char*> rows[] = {{"/a//b/./c/../d/", "/a/b/d"},
                                                      {"b", "/work/b"},
                                                      {"~", "/Users/ada"},
                                                      {"~/b", "/Users/ada/b"},
                                                      {"~//b", "/Users/ada/b"},
                                                      {"~grace/b.zip", "/Users/grace/b.zip"},
                                                      {"~nobody/b", "/work/~nobody/b"},
                                                      {"/", "/"},
                                                      {"..", "/"}};
  for (const auto& [typed, path] : rows) EXPECT_EQ(standardizedPath(typed, homeOf, "/work"), path) << typed;
}

TEST(ByteCountText, RoundsToTheUnitThatReadsBest) {
  const std::pair<std::uint64_t, const char*> rows[] = {{0, "0 bytes"},
                                                        {1, "1 byte"},
                                                        {999, "999 bytes"},
                                                        {1000, "1 KB"},
                                                        {999'499, "999 KB"},
                                                        {999'999, "1 MB"},
                                                        {1'240'000, "1.2 MB"},
                                                        {10'000'000, "10 MB"},
                                                        {999'600'000, "1 GB"},
                                                        {1'250'000'000, "1.25 GB"},
                                                        {100'000'000'000, "100 GB"}};
  for (const auto& [bytes, text] : rows) EXPECT_EQ(byteCountText(bytes), text);
}

}  // namespace
}  // namespace corvane
