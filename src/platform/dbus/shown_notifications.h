// Which notifications are on the screen, and by what number the service knows each. Outlives the process in a small
// file, so that a later one can still take them away.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace corvane {

// Main thread. Each change is on disk when it returns; a disk that refuses costs the memory of later processes only.
class ShownNotifications {
 public:
  struct One {
    std::uint32_t number = 0;
    std::map<std::string, std::string> userInfo;
    friend bool operator==(const One&, const One&) = default;
  };

  // Reads `file`; one that is not there or not understood holds nothing. Its folder is not made.
  explicit ShownNotifications(std::filesystem::path file);

  // Numbers mean something to one run of a service only. Any other than before makes everything void.
  void belongTo(const std::string& service);
  [[nodiscard]] bool areOf(const std::string& service) const { return service == service_; }

  [[nodiscard]] const std::map<std::string, One>& byIdentifier() const { return shown_; }
  // 0 when there is none, which no service uses.
  [[nodiscard]] std::uint32_t numberOf(const std::string& identifier) const;
  [[nodiscard]] std::optional<std::string> identifierOf(std::uint32_t number) const;

  void put(const std::string& identifier, One one);
  void forget(const std::string& identifier);
  void forgetAll();

 private:
  void read();
  void write() const;

  std::filesystem::path file_;
  std::string service_;
  std::map<std::string, One> shown_;
};

}  // namespace corvane
