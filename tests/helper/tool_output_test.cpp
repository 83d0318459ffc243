#include "helper/tool_output.h"

#include "helper/label_evaluation.h"
#include "support/test.h"

namespace corvane {
namespace {

TEST(ToolOutput, BelievesOnlyWhatLooksLikeAVersion) {
  for (const char* good :
       {"1", "2024.3", "v3-beta2", "r12", "6.0.1(2847)", "1.2.3+45", "1234567890123456789012345678901234567890"})
    EXPECT_TRUE(isBelievableVersion(good)) << good;
  for (const char* bad :
       {"", "https:", "https://github.com", ".0", ".CE", "...", "latest", "1.0 beta", "1.0\n", "1/2", "-1",
        "12345678901234567890123456789012345678901", "\xC3\xA4", "1.0\xff", "1.0\xC3\xA4", "1\x7f"})
    EXPECT_FALSE(isBelievableVersion(bad)) << bad;
}

TEST(ToolOutput, ReadsVersionsFromTheLinesThatTellThem) {
  const std::string head = "2026-11-22 21:04:42 : INFO  : quill : ";
  const std::pair<std::string, std::optional<std::string>> rows[] = {
      {head + "Latest version of Quill is 4.1", "4.1"},
      {head + "Latest version of What is new is 4.1", "4.1"},
      {head + "Latest version of Quill is https:", std::nullopt},
      {head + "Latest version not specified.", std::nullopt},
      {head + "Downloaded version of Quill is 4.2 on versionKey CFBundleVersion (replacing version 4.0).", "4.2"},
      {head + "Installing Quill version 4.3 on versionKey CFBundleShortVersionString.", "4.3"},
      {head + "Downloaded package org.quill.pkg version 4.4", "4.4"},
      {head + "appversion: 4.0", std::nullopt},
      {"Latest version of Quill is 4.1", std::nullopt},  // a page's words, not the tool's
      {"2026-11-22 21:04:42 Latest version of Quill is 4.1", std::nullopt},
  };
  for (const auto& [line, version] : rows) EXPECT_EQ(latestVersionIn(line), version) << line;
  EXPECT_EQ(blockingProcessIn(head + "found blocking process Quill Agent"), "Quill Agent");
  EXPECT_FALSE(blockingProcessIn("found blocking process Quill"));
}

TEST(LabelEvaluation, TellsEveryKindOfFailureApart) {
  const auto read = [](int code, bool late, std::string output) {
    return readEvaluation(ChildExit{.code = code, .timedOut = late, .output = std::move(output)}, "M:");
  };
  EXPECT_EQ(read(0, false, "noise\nM:1.2\n").version, "1.2");
  EXPECT_EQ(read(0, false, "M:9.9\n\nM:1.2\n").version, "1.2") << "the last marker counts";
  EXPECT_TRUE(read(0, false, "M:\n").notInMetadata);
  EXPECT_EQ(read(143, true, "").failureReason, "The vendor's page did not answer within 20 seconds");
  EXPECT_EQ(read(95, false, "").failureReason, "The label ended with code 95 before it named a version");
  EXPECT_EQ(read(0, false, "M:a page\n").failureReason, "The vendor's page answered with something that is no version");
  EXPECT_FALSE(read(0, false, "M:not found 404\n").version);
  EXPECT_FALSE(read(1, false, "text M:1.2\n").version) << "a marker inside a line is not ours";
  EXPECT_FALSE(readEvaluation(failure("d", 2, "no such file"), "M:").version);
}

}  // namespace
}  // namespace corvane
