#include "platform/net/web_address.h"

#include <memory>

#include "base/ascii.h"

namespace corvane {

std::optional<WebAddress> WebAddress::of(const CurlLibrary& curl, const std::string& text) {
  if (text.find('\0') != std::string::npos) return std::nullopt;
  const std::unique_ptr<CURLU, decltype(curl.urlCleanup)> url(curl.url(), curl.urlCleanup);
  if (!url || curl.urlSet(url.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK) return std::nullopt;
  const auto part = [&](CURLUPart which) -> std::string {
    char* value = nullptr;
    if (curl.urlGet(url.get(), which, &value, CURLU_DEFAULT_PORT) != CURLUE_OK || value == nullptr) return {};
    const std::unique_ptr<char, decltype(curl.free)> owner(value, curl.free);
    return value;
  };
  WebAddress address{.scheme = lowercased(part(CURLUPART_SCHEME)),
                     .host = lowercased(part(CURLUPART_HOST)),
                     .port = part(CURLUPART_PORT)};
  if ((address.scheme != "http" && address.scheme != "https") || address.host.empty()) return std::nullopt;
  return address;
}

}  // namespace corvane
