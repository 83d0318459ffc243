// What the real daemon answers, and how it begins and ends.
#include "helper/helper_process.h"

namespace corvane {
namespace {

TEST_F(HelperProcess, GivesTheToolAnEnvironmentOfItsOwn) {
  const auto answer =
      patchRunAnswerFromJson(ask(ask::StartPatching{.labels = {Label("quill")}, .alsoStageLabels = {}}).value());
  EXPECT_EQ(answer, (PatchRunAnswer{true, "Updated 1 of 1.", 1}));
  EXPECT_NE(log().find("Installomator: quill: Start"), std::string::npos);
  const auto environment = testing::TemporaryFolder::read(folder_.path() / "tool-environment");
  EXPECT_EQ(environment.find("CTEST"), std::string::npos);
  EXPECT_NE(environment.find("LANG=C.UTF-8"), std::string::npos);
}

TEST_F(HelperProcess, AnswersHostileFramesWithTypedErrorsAndHarmsNoOther) {
  const int good = connectTo();
  const auto codeOf = [&](const std::string& bytes, bool halfClose = false) {
    const int fd = connectTo();
    const auto answer = exchange(fd, bytes, halfClose);
    const auto parsed = answer ? parseAnswer(*answer, "t") : Result<JsonValue>(failure("test", -1, "hung up"));
    char rest = 0;
    EXPECT_LE(recv(fd, &rest, 1, 0), 0) << "the connection has ended";
    close(fd);
    return parsed ? 0 : parsed.error().code;
  };
  const auto frame = [](std::string_view body) { return encodeFrame(body); };
  const struct {
    std::string bytes;
    HelperErrorCode code;
    bool torn = false;
  } rows[] = {
      {"\xFF\xFF\xFF\xFF", HelperErrorCode::tooLarge},
      {std::string("\x00\x10\x00\x01", 4), HelperErrorCode::tooLarge},
      {frame("not json"), HelperErrorCode::malformed},
      {frame(R"({"version":2,"id":"t","op":"status"})"), HelperErrorCode::version},
      {frame(R"({"version":1,"id":"t","op":"reboot"})"), HelperErrorCode::unknownOperation},
      {frame(R"({"version":1,"id":"t","op":"status","root":"/"})"), HelperErrorCode::malformed},
      {frame(R"({"version":1,"id":"t","op":"status","op":"startPatching"})"), HelperErrorCode::malformed},
      {frame(R"({"version":1,"id":"t","op":"startPatching","labels":["a;touch x"],"alsoStageLabels":[]})"),
       HelperErrorCode::malformed},
      {std::string("\x00\x00\x00\x20half", 8), HelperErrorCode::malformed, true},
  };
  for (const auto& row : rows)
    EXPECT_EQ(codeOf(row.bytes, row.torn), static_cast<int>(row.code)) << row.bytes.substr(0, 80);
  const auto status = exchange(good, encodeFrame(composeRequest({.id = "g", .question = ask::Status{}})));
  ASSERT_TRUE(status);
  EXPECT_EQ(statusInfoFromJson(parseAnswer(*status, "g").value())->processIdentifier, pid_);
  close(good);
}

TEST_F(HelperProcess, AnswersDuringARunAndEndsItWhenToldToStop) {
  const int run = connectTo();
  const auto request = encodeFrame(
      composeRequest({.id = "t", .question = ask::StartPatching{.labels = {Label("slow")}, .alsoStageLabels = {}}}));
  ASSERT_GT(send(run, request.data(), request.size(), 0), 0);
  ASSERT_TRUE(testing::eventually([&] { return std::filesystem::exists(folder_.path() / "slow-started"); }));
  const auto progress = patchProgressFromJson(ask(ask::PatchingProgress{}).value());
  EXPECT_EQ(progress, (PatchProgressInfo{true, "slow", 0, 1}));
  EXPECT_TRUE(ask(ask::Status{}));
  kill(pid_, SIGTERM);
  const auto answer = receive(run);
  ASSERT_TRUE(answer);
  const auto parsed = parseAnswer(*answer, "t");
  ASSERT_FALSE(parsed);
  EXPECT_TRUE(isHelperError(parsed.error(), HelperErrorCode::stopping));
  int status = 0;
  waitpid(std::exchange(pid_, -1), &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_FALSE(std::filesystem::exists(places_.helperHeartbeat()));
  EXPECT_FALSE(std::filesystem::exists(places_.helperSocket()));
  EXPECT_TRUE(receipts().empty());
  close(run);
}

TEST_F(HelperProcess, RefusesASecondHelper) {
  const std::string root = folder_.path();
  const char* arguments[] = {CORVANE_HELPER_PROGRAM, "--root", root.c_str(), nullptr};
  pid_t second = -1;
  ASSERT_EQ(posix_spawn(&second, CORVANE_HELPER_PROGRAM, nullptr, nullptr, const_cast<char**>(arguments), environ), 0);
  int status = 0;
  waitpid(second, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_TRUE(ask(ask::Status{})) << "the first goes on";
}

}  // namespace
}  // namespace corvane
