// What the vendors' server takes and answers.

#include "sample/files.h"
#include "sample/vendors/http_request.h"
#include "sample/vendors/vendor_folder.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::sample {
namespace {

namespace fs = std::filesystem;

TEST(HttpRequest, TakesDecentPathsOnly) {
  const auto path = [](std::string_view line) {
    const auto request = parseRequest(std::string(line) + "\r\nHost: a\r\n\r\n");
    return request ? request->path : "refused";
  };
  EXPECT_EQ(path("GET /quill/version.txt HTTP/1.1"), "quill/version.txt");
  EXPECT_EQ(path("GET /a%20b?x=/../y HTTP/1.0"), "a b");
  for (const auto* bad : {"GET /../env HTTP/1.1", "GET /a/%2e%2e/b HTTP/1.1", "GET /.fail/quill HTTP/1.1",
                          "POST /a HTTP/1.1", "GET a HTTP/1.1", "GET /a%0 HTTP/1.1", "GET /a%00 HTTP/1.1",
                          "GET /a%zz HTTP/1.1", "GET /a FTP/1", "GET", " ", ""})
    EXPECT_EQ(path(bad), "refused") << bad;
  EXPECT_TRUE(parseRequest("HEAD /a HTTP/1.1\r\n\r\n")->headOnly);
}

struct VendorFolderTest : ::testing::Test {
  corvane::testing::TemporaryFolder temporary_;
  fs::path folder_ = temporary_.path();
};

TEST_F(VendorFolderTest, ObeysTheNearestOrderAndLooksAnewEachTime) {
  put(folder_ / "big/a.txt", "1.0\n");
  put(folder_ / ".delay/big", "50\n");
  const VendorFolder vendors(folder_);
  EXPECT_EQ(vendors.answer("big/a.txt").delay.count(), 50);
  EXPECT_EQ(vendors.answer("other").delay.count(), 0);

  put(folder_ / ".fail/big", "503\n");
  EXPECT_EQ(vendors.answer("big/a.txt").reply.status, 503);
  put(folder_ / ".fail/big", "close\n");
  EXPECT_TRUE(vendors.answer("big/a.txt").hangUp);
  fs::remove(folder_ / ".fail/big");
  EXPECT_EQ(vendors.answer("big/a.txt").reply.body, "1.0\n");

  put(folder_ / ".redirect/big/latest", "/big/a.txt\n");
  EXPECT_EQ(vendors.answer("big/latest").reply.location, "/big/a.txt");
}

}  // namespace
}  // namespace corvane::sample
