#include "sample/vendors/vendor_folder.h"

#include <charconv>
#include <system_error>

#include "base/atomic_file.h"

namespace corvane::sample {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kPageLimit = 64U << 20U;
constexpr int kLongestDelay = 24 * 3600 * 1000;

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.remove_suffix(1);
  return text;
}

int numberOr(int otherwise, std::string_view text) {
  int value = 0;
  text = trimmed(text);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && value >= 0 ? value : otherwise;
}

std::string_view contentType(const fs::path& path) {
  const auto extension = path.extension().string();
  if (extension == ".json") return "application/json";
  if (extension == ".html") return "text/html; charset=utf-8";
  if (extension == ".xml") return "application/xml";
  if (extension == ".txt") return "text/plain; charset=utf-8";
  return "application/octet-stream";
}

}  // namespace

std::optional<std::string> VendorFolder::order(std::string_view kind, std::string_view path) const {
  for (fs::path place(path); !place.empty(); place = place.parent_path()) {
    std::error_code ignored;
    const auto file = folder_ / kind / place;
    if (!fs::is_regular_file(file, ignored)) continue;
    if (auto text = readFile(file, 4096)) return std::string(trimmed(*text));
  }
  return std::nullopt;
}

HttpReply VendorFolder::page(std::string_view path) const {
  auto file = folder_ / path;
  std::error_code ignored;
  if (fs::is_directory(file, ignored)) file /= "index.html";
  auto bytes = fs::is_regular_file(file, ignored) ? readFile(file, kPageLimit) : failure("CRVSample", 404, "no page");
  if (!bytes) return {.status = 404, .body = "Not found\n"};
  return {.contentType = std::string(contentType(file)), .location = {}, .body = *std::move(bytes)};
}

VendorAnswer VendorFolder::answer(std::string_view path) const {
  VendorAnswer answer;
  if (const auto delay = order(".delay", path))
    answer.delay = std::chrono::milliseconds(std::min(numberOr(0, *delay), kLongestDelay));
  if (const auto failure = order(".fail", path)) {
    answer.hangUp = *failure == "close";
    answer.reply = {.status = numberOr(503, *failure), .body = "Failing to order\n"};
  } else if (auto location = order(".redirect", path)) {
    answer.reply = {.status = 302, .location = *std::move(location)};
  } else {
    answer.reply = page(path);
  }
  return answer;
}

}  // namespace corvane::sample
