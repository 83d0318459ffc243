// Addresses of Unix-domain sockets. The kernel takes 107 bytes of path and no more.
#pragma once

#include <filesystem>
#include <string>

#include "base/error.h"

namespace corvane {

// Keep it until the socket is bound or connected. A path that is too long is named through an open descriptor
// of its folder, so that servers and clients may lie as deep as they like.
class SocketAddress {
 public:
  // Fails with errno, in the domain "CRVFiles", when the folder of a long path cannot be opened.
  [[nodiscard]] static Result<SocketAddress> of(const std::filesystem::path& path);

  SocketAddress(SocketAddress&& other) noexcept;
  SocketAddress& operator=(SocketAddress&& other) = delete;
  ~SocketAddress();

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  SocketAddress(std::string text, int folder) : text_(std::move(text)), folder_(folder) {}

  std::string text_;
  int folder_ = -1;
};

}  // namespace corvane
