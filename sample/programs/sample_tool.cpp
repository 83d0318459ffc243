// What the sample's scripts cannot read or write by themselves:
//   sample_tool plist FILE KEY                       prints a text or number of a property list's top level
//   sample_tool json PATH < text                     prints the value at a.b[0].c
//   sample_tool receipt FILE ID VERSION PREFIX       writes a package receipt
// Ends with 1 when there is no such value.
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

#include "base/atomic_file.h"
#include "base/json.h"
#include "base/plist.h"

namespace {

using corvane::JsonValue;

int printPlistValue(const char* path, std::string_view key) {
  const auto bytes = corvane::readFile(path);
  if (!bytes) return 1;
  const auto document = corvane::parsePlist(*bytes);
  if (!document || document->root.dict() == nullptr) return 1;
  const auto found = document->root.dict()->find(key);
  if (found == document->root.dict()->end()) return 1;
  if (const auto text = found->second.string()) {
    fmt::print("{}\n", *text);
  } else if (const auto number = found->second.integer()) {
    fmt::print("{}\n", *number);
  } else {
    return 1;
  }
  return 0;
}

// The next step of a path: a member's name, or a number in brackets.
const JsonValue* step(const JsonValue* value, std::string_view name) {
  if (!name.starts_with('[')) return value->find(name);
  const auto* array = value->array();
  const auto index = static_cast<std::size_t>(std::strtoul(name.data() + 1, nullptr, 10));
  return array != nullptr && index < array->size() ? &(*array)[index] : nullptr;
}

int printJsonValue(std::string_view path) {
  const std::string text{std::istreambuf_iterator<char>(std::cin), {}};
  const auto parsed = corvane::parseJson(text);
  if (!parsed) return 1;
  const JsonValue* value = &*parsed;
  while (value != nullptr && !path.empty()) {
    if (path.starts_with('.')) path.remove_prefix(1);
    const auto end = path.find_first_of(".[", 1);
    value = step(value, path.substr(0, end));
    path = end == std::string_view::npos ? std::string_view() : path.substr(end);
  }
  if (value == nullptr) return 1;
  const auto plain = value->string();
  fmt::print("{}\n", plain ? std::string(*plain) : corvane::writeJson(*value));
  return 0;
}

int writeReceipt(std::span<char*> arguments) {
  const auto now = std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
  const corvane::PlistDict receipt{{"PackageIdentifier", arguments[1]},
                                   {"PackageVersion", arguments[2]},
                                   {"InstallPrefixPath", arguments[3]},
                                   {"InstallProcessName", "installer"},
                                   {"InstallDate", corvane::Date(now)}};
  const auto bytes = corvane::writePlist(receipt, corvane::PlistFormat::binary);
  const auto written =
      bytes ? corvane::writeFileAtomically(arguments[0], *bytes) : corvane::Status(std::unexpected(bytes.error()));
  if (!written) {
    fmt::print(stderr, "{}\n", written.error().text);
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
  const std::string_view verb = argc > 1 ? argv[1] : "";
  if (verb == "plist" && argc == 4) return printPlistValue(argv[2], argv[3]);
  if (verb == "json" && argc == 3) return printJsonValue(argv[2]);
  if (verb == "receipt" && argc == 6) return writeReceipt(arguments.subspan(2));
  fmt::print(stderr, "Usage: sample_tool plist FILE KEY | json PATH | receipt FILE ID VERSION PREFIX\n");
  return 2;
}
