// What the vendors answer, by the files of one folder. Looks anew at each request, so that pages, delays and
// failures can be changed while the server runs.
//
//   <path>              the page or download itself; a folder's page is its index.html
//   .delay/<path>       milliseconds before the answer
//   .fail/<path>        a status code, or "close" to hang up without an answer
//   .redirect/<path>    where the answer leads
//
// An order for a folder counts for all that is below it, the nearest one first.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "sample/vendors/http_request.h"

namespace corvane::sample {

struct VendorAnswer {
  HttpReply reply;
  std::chrono::milliseconds delay{};
  bool hangUp = false;
};

class VendorFolder {
 public:
  explicit VendorFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}
  [[nodiscard]] VendorAnswer answer(std::string_view path) const;

 private:
  [[nodiscard]] std::optional<std::string> order(std::string_view kind, std::string_view path) const;
  [[nodiscard]] HttpReply page(std::string_view path) const;

  std::filesystem::path folder_;
};

}  // namespace corvane::sample
