#include "platform/http_client.h"

#include <sys/stat.h>

#include "platform/net/curl_http_client.h"
#include "support/environment_variable.h"
#include "support/real_loop.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "support/web_server.h"

namespace corvane::testing {

struct HttpClientTest : ::testing::Test {
  using Answer = Result<HttpAnswer>;

  Answer send(HttpRequest request) {
    std::optional<Answer> answer;
    client_->send(std::move(request), [&](Answer given) { answer = std::move(given); });
    EXPECT_FALSE(answer) << "answered in the same turn";
    EXPECT_TRUE(loop_.wait([&] { return answer.has_value(); }));
    return answer.value_or(Answer(HttpAnswer{}));
  }
  Answer get(const std::string& url) { return send({.url = url, .timeLimit = kPatience}); }
  Answer download(const std::string& path, std::uint64_t limit = 1U << 20U) {
    std::optional<Answer> answer;
    client_->download({.url = server_.url(path), .timeLimit = kPatience}, file_, limit,
                      [&](Answer given) { answer = std::move(given); });
    EXPECT_TRUE(loop_.wait([&] { return answer.has_value(); }));
    return answer.value_or(Answer(HttpAnswer{}));
  }
  static int code(const Answer& answer) { return answer ? 0 : answer.error().code; }

  EnvironmentVariable noProxy_{"no_proxy", "*"};
  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_.path() / "download";
  WebServer server_;
  RealLoop loop_;
  std::unique_ptr<CurlHttpClient> client_ = std::make_unique<CurlHttpClient>(loop_.loop(), loop_.mainQueue());
};

TEST_F(HttpClientTest, AnAnswerIsGivenWhateverItsStatus) {
  server_.page("/", WebServer::answer("200 OK", "hello", "X-Two:  words here \r\nSet-Cookie: a=b\r\n"));
  server_.page("/none", WebServer::answer("404 Not Found", "no such page"));
  const auto page = get(server_.url("/"));
  ASSERT_TRUE(page) << page.error().text;
  EXPECT_EQ(page->status, 200);
  EXPECT_EQ(page->body, "hello");
  EXPECT_EQ(page->redirectedTo, std::nullopt);
  EXPECT_THAT(page->headers, Contains(Pair("x-two", "words here")));
  const auto none = get(server_.url("/none"));
  ASSERT_TRUE(none);
  EXPECT_EQ(none->status, 404);
  EXPECT_EQ(none->body, "no such page");
  const auto asked = server_.requests();
  ASSERT_EQ(asked.size(), 2U);
  EXPECT_EQ(asked[0].headers.at("User-Agent"), "Corvane");
  EXPECT_THAT(asked[1].headers, Not(Contains(Key("Cookie")))) << "nothing is kept between requests";
}

TEST_F(HttpClientTest, ABodyMakesAPostAndHeadersGoAsGiven) {
  server_.page("/hook", WebServer::answer("204 No Content", ""));
  const std::string body("a=\0b", 4);
  const auto answer = send({.url = server_.url("/hook"),
                            .timeLimit = kPatience,
                            .headers = {{"Content-Type", "application/json"}, {"X-Empty", ""}, {"User-Agent", "Other"}},
                            .body = body});
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 204);
  const auto asked = server_.requests().at(0);
  EXPECT_EQ(asked.line, "POST /hook HTTP/1.1");
  EXPECT_EQ(asked.body, body);
  EXPECT_EQ(asked.headers.at("Content-Type"), "application/json");
  EXPECT_EQ(asked.headers.at("User-Agent"), "Other");
  EXPECT_THAT(asked.headers, Not(Contains(Key("Expect"))));

  for (const auto& [name, value] : std::vector<std::pair<std::string, std::string>>{{"X-Split", "a\r\nX-Second: b"},
                                                                                    {"X\nSplit", "a"},
                                                                                    {"X: a", "b"},
                                                                                    {"", "a"},
                                                                                    {"X-Zero", std::string(1, '\0')}})
    EXPECT_EQ(code(send({.url = server_.url("/hook"), .timeLimit = kPatience, .headers = {{name, value}}})),
              HttpError::badRequest)
        << name;
  EXPECT_EQ(server_.requests().size(), 1U);
}

TEST_F(HttpClientTest, RedirectsAreFollowedButHeadersStayWithTheirServer) {
  WebServer other;
  other.page("/end", WebServer::answer("200 OK", "there"));
  server_.page("/end", WebServer::answer("200 OK", "here"));
  server_.page("/near", WebServer::redirect("301 Moved", "end"));
  server_.page("/far", WebServer::redirect("302 Found", other.url("/back")));
  other.page("/back", WebServer::redirect("302 Found", server_.url("/end")));
  server_.page("/again", WebServer::redirect("307 Temporary Redirect", other.url("/end")));
  server_.page("/see", WebServer::redirect("303 See Other", other.url("/end")));
  const auto ask = [&](const char* path, std::optional<std::string> body = std::nullopt) {
    const auto answer = send({.url = server_.url(path),
                              .timeLimit = kPatience,
                              .headers = {{"X-Secret", "s"}, {"Content-Type", "text/plain"}},
                              .body = std::move(body)});
    return answer ? answer->body : answer.error().text;
  };
  EXPECT_EQ(ask("/near"), "here");
  EXPECT_THAT(server_.requests().back().headers, Contains(Pair("X-Secret", "s")));
  EXPECT_EQ(ask("/far"), "here");
  EXPECT_THAT(other.requests().back().headers, Not(Contains(Key("X-Secret"))));
  EXPECT_THAT(server_.requests().back().headers, Not(Contains(Key("X-Secret")))) << "not even back at home";
  EXPECT_EQ(ask("/again", "body"), "there");
  EXPECT_EQ(other.requests().back().body, "body");
  EXPECT_EQ(other.requests().back().headers.at("Content-Type"), "text/plain");
  EXPECT_THAT(other.requests().back().headers, Not(Contains(Key("X-Secret"))));
  EXPECT_EQ(ask("/see", "body"), "there");
  EXPECT_EQ(other.requests().back().line, "GET /end HTTP/1.1");
  EXPECT_THAT(other.requests().back().headers, Not(Contains(Key("Content-Type"))));
}

TEST_F(HttpClientTest, RedirectsEndAtTheirLimitAndAtOtherProtocols) {
  const auto step = [](int number) { return "/" + std::to_string(number); };
  for (int i = 0; i < 20; ++i) server_.page(step(i), WebServer::redirect("302 Found", step(i + 1)));
  server_.page(step(20), WebServer::answer("200 OK", "end"));
  EXPECT_EQ(get(server_.url(step(20 - kHttpRedirectsAtMost)))->redirectedTo, server_.url(step(20)));
  EXPECT_EQ(code(get(server_.url(step(20 - kHttpRedirectsAtMost - 1)))), HttpError::badRedirect);

  const auto secret = folder_.write("secret", "secret");
  for (const auto& to : {"file://" + secret.string(), std::string("ftp://127.0.0.1/"), std::string("http://")}) {
    server_.page("/out", WebServer::redirect("302 Found", to));
    EXPECT_EQ(code(get(server_.url("/out"))), HttpError::badRedirect) << to;
  }
  for (const auto& url :
       {"file://" + secret.string(), std::string("ftp://127.0.0.1/"), std::string("/path"), std::string(),
        std::string("http://a b/"), std::string("http://"), std::string("http://127.0.0.1/\0x", 19)})
    EXPECT_EQ(code(get(url)), HttpError::badRequest) << url;
}

TEST_F(HttpClientTest, ErrorsNameTheServerAndNothingElse) {
  const auto late = send({.url = server_.url("/secret?token=x"), .timeLimit = 30ms});
  ASSERT_FALSE(late);
  EXPECT_EQ(late.error().code, HttpError::noAnswer);
  EXPECT_THAT(late.error().text, AllOf(HasSubstr("127.0.0.1"), Not(HasSubstr("secret")), Not(HasSubstr("token"))));

  std::string nowhere;
  {
    const WebServer gone;
    nowhere = gone.url("/secret");
  }
  const auto refused = get(nowhere);
  ASSERT_FALSE(refused);
  EXPECT_THAT(refused.error().text, AllOf(HasSubstr("127.0.0.1"), Not(HasSubstr("secret"))));
  for (const auto* torn : {"no server\r\n\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf", ""}) {
    server_.page("/torn", torn);
    EXPECT_EQ(code(get(server_.url("/torn"))), HttpError::noAnswer) << torn;
  }
  auto credentials = server_.url("/secret");
  credentials.insert(7, "name:password@");
  EXPECT_THAT(send({.url = credentials, .timeLimit = 30ms}).error().text, Not(HasSubstr("password")));
}

TEST_F(HttpClientTest, ABodyAboveItsLimitFails) {
  server_.page("/most", WebServer::answer("200 OK", std::string(kHttpBodyLimit, 'x')));
  server_.page("/more", WebServer::answer("200 OK", std::string(kHttpBodyLimit + 1, 'x')));
  server_.page("/head", WebServer::answer("200 OK", "",
                                          "X: " + std::string(90'000, 'x') + "\r\nY: " + std::string(90'000, 'x') +
                                              "\r\nZ: " + std::string(90'000, 'x') + "\r\n"));
  EXPECT_EQ(get(server_.url("/most"))->body.size(), kHttpBodyLimit);
  EXPECT_EQ(code(get(server_.url("/more"))), HttpError::tooLarge);
  EXPECT_EQ(code(get(server_.url("/head"))), HttpError::tooLarge);
}

TEST_F(HttpClientTest, ADownloadIsAFileForItsOwnerOnly) {
  server_.page("/tool", WebServer::answer("200 OK", "#!/bin/zsh"));
  server_.page("/moved", WebServer::redirect("302 Found", "/tool"));
  // What lies there already, be it a link to elsewhere, is not written to.
  const auto elsewhere = folder_.write("elsewhere", "mine");
  std::filesystem::create_symlink(elsewhere, file_);
  const auto answer = download("/moved", 10);
  ASSERT_TRUE(answer) << answer.error().text;
  EXPECT_EQ(answer->body, "");
  EXPECT_EQ(TemporaryFolder::read(file_), "#!/bin/zsh");
  EXPECT_EQ(TemporaryFolder::read(elsewhere), "mine");
  EXPECT_EQ(std::filesystem::symlink_status(file_).permissions(), std::filesystem::perms(0600));
}

TEST_F(HttpClientTest, ADownloadThatFailedLeavesNoFile) {
  server_.page("/tool", WebServer::answer("200 OK", "#!/bin/zsh"));
  server_.page("/none", WebServer::answer("404 Not Found", "no such page"));
  server_.page("/half", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
  const auto fails = [&](const char* path, std::uint64_t limit, int expected) {
    folder_.write("download", "of before");
    const auto answer = download(path, limit);
    EXPECT_EQ(code(answer), expected) << path;
    EXPECT_FALSE(std::filesystem::exists(file_)) << path;
    return answer;
  };
  EXPECT_EQ(fails("/none", 100, 0)->body, "no such page");
  fails("/half", 100, HttpError::noAnswer);
  fails("/tool", 9, HttpError::tooLarge);
  file_ = folder_.path() / "no folder" / "download";
  EXPECT_EQ(code(download("/tool")), HttpError::file);

  file_ = folder_.path() / "given up";
  client_->download({.url = server_.url("/silent"), .timeLimit = kPatience}, file_, 100,
                    [](const Answer&) { ADD_FAILURE() << "answered after the end"; });
  ASSERT_TRUE(
      loop_.wait([&] { return !server_.requests().empty() && server_.requests().back().line.contains("silent"); }));
  EXPECT_TRUE(std::filesystem::exists(file_));
  client_.reset();
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(HttpClientTest, ManyAtOnceAreEachAnswered) {
  for (int i = 0; i < 40; ++i) server_.page("/" + std::to_string(i), WebServer::answer("200 OK", std::to_string(i)));
  std::vector<std::string> bodies(40);
  int answers = 0;
  for (int i = 0; i < 40; ++i)
    client_->send({.url = server_.url("/" + std::to_string(i)), .timeLimit = kPatience}, [&, i](const Answer& answer) {
      bodies[static_cast<std::size_t>(i)] = answer ? answer->body : answer.error().text;
      ++answers;
    });
  ASSERT_TRUE(loop_.wait([&] { return answers == 40; }));
  for (int i = 0; i < 40; ++i) EXPECT_EQ(bodies[static_cast<std::size_t>(i)], std::to_string(i));
}

}  // namespace corvane::testing
