// corvane_sample: makes a sample Mac, and writes scenes on one.
#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <exception>
#include <optional>
#include <span>
#include <string_view>

#include "platform/linux/linux_locale.h"
#include "platform/posix/system_clock.h"
#include "sample/files.h"
#include "sample/sample_mac.h"
#include "sample/scenes.h"

namespace {

constexpr std::string_view kUsage =
    "Usage: corvane_sample create DIR --port N [--bundle Corvane.app] [--bundles N --labels N --seed S]\n"
    "Makes a folder that Corvane's programs take for a Mac; DIR/env is to be sourced.\n"
    "With --bundles or --labels it makes large trees for benchmarks instead.\n\n"
    "Usage: corvane_sample scene NAME DIR\n"
    "Writes preferences and receipts on the sample in DIR, from which the application starts in that state.\n"
    "Ends with 3 when the sample's applications were not discovered yet.\n";

constexpr int kUsageWrong = 2;
constexpr int kNothingDiscovered = 3;

template <class T>
std::optional<T> number(std::string_view text) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

corvane::sample::BigTree& bigTree(corvane::sample::SampleSpec& spec) {
  if (!spec.bigTree) spec.bigTree.emplace();
  return *spec.bigTree;
}

template <class T>
bool take(T& field, std::string_view text) {
  const auto value = number<T>(text);
  if (!value || *value > 1'000'000 || (std::is_signed_v<T> && *value < static_cast<T>(0))) return false;
  field = *value;
  return true;
}

std::optional<corvane::sample::SampleSpec> parse(std::span<char*> arguments) {
  if (arguments.size() < 3 || std::string_view(arguments[1]) != "create") return std::nullopt;
  corvane::sample::SampleSpec spec{.folder = arguments[2]};
  spec.programs = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  for (std::size_t i = 3; i < arguments.size(); i += 2) {
    if (i + 1 == arguments.size()) return std::nullopt;
    const std::string_view key = arguments[i];
    const std::string_view value = arguments[i + 1];
    bool understood = true;
    if (key == "--port")
      understood = take(spec.port, value) && spec.port > 0 && spec.port < 65536;
    else if (key == "--bundle")
      spec.bundle = value;
    else if (key == "--bundles")
      understood = take(bigTree(spec).bundles, value);
    else if (key == "--labels")
      understood = take(bigTree(spec).labels, value);
    else if (key == "--seed")
      understood = take(bigTree(spec).seed, value);
    else
      understood = false;
    if (!understood) return std::nullopt;
  }
  return spec.port > 0 ? std::optional(spec) : std::nullopt;
}

int writeScene(std::string_view name, const std::filesystem::path& sample) {
  const auto* scene = corvane::sample::sceneNamed(name);
  if (scene == nullptr) {
    fmt::print(stderr, "corvane_sample: there is no scene \"{}\"; there are:\n", name);
    for (const auto& each : corvane::sample::scenes()) fmt::print(stderr, "  {:<16} {}\n", each.name, each.shows);
    return kUsageWrong;
  }
  corvane::sample::putScene(*scene, sample, corvane::SystemClock().now(), corvane::LinuxLocale().calendar());
  fmt::print("Scene {}: {}\n{}\n", scene->name, scene->shows, scene->hint);
  return 0;
}

int run(std::span<char*> arguments) {
  if (arguments.size() == 4 && std::string_view(arguments[1]) == "scene") return writeScene(arguments[2], arguments[3]);
  const auto spec = parse(arguments);
  if (!spec) {
    fmt::print(stderr, "{}", kUsage);
    return kUsageWrong;
  }
  corvane::sample::createSample(*spec);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run({argv, static_cast<std::size_t>(argc)});
  } catch (const corvane::sample::NothingDiscovered& error) {
    fmt::print(stderr, "corvane_sample: {}\n", error.what());
    return kNothingDiscovered;
  } catch (const std::exception& error) {
    fmt::print(stderr, "corvane_sample: {}\n", error.what());
    return 1;
  }
}
