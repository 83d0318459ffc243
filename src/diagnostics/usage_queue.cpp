#include "diagnostics/usage_queue.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace corvane {
namespace {

constexpr std::int64_t kVersion = 1;
constexpr mode_t kOwnerOnly = 0600;
constexpr std::uint64_t kMostBytes = 1U << 20U;  // far above what the most signals take

}  // namespace

UsageQueue::UsageQueue(std::filesystem::path file, Files& files, const Logger& log)
    : file_(std::move(file)), files_(files), log_(log) {
  if (auto signals = readAll())
    signals_ = std::move(*signals);
  else if (signals.error().code != ENOENT)
    setAside(signals.error().text);
}

Result<JsonArray> UsageQueue::readAll() const {
  if (files_.size(file_).value_or(0) > kMostBytes) return failure("CRVUsage", EFBIG, "it is too large");
  const auto text = files_.read(file_);
  if (!text) return std::unexpected(text.error());
  const auto document = parseJson(*text);
  if (!document) return failure("CRVUsage", EINVAL, document.error().text);
  const auto* version = document->find("version");
  const auto* signals = document->find("signals");
  if (version == nullptr || version->integer() != kVersion || signals == nullptr || signals->array() == nullptr)
    return failure("CRVUsage", EINVAL, "it is of another form");
  JsonArray known;
  for (const auto& signal : *signals->array())
    if (signal.object() != nullptr && known.size() < kMostSignals) known.push_back(signal);
  return known;
}

void UsageQueue::setAside(const std::string& reason) {
  auto aside = file_;
  aside += ".damaged";
  log_.warning("The queue of usage signals cannot be read and is set aside: " + reason);
  (void)files_.rename(file_, aside);
}

JsonArray UsageQueue::front(std::size_t most) const {
  return {signals_.begin(), signals_.begin() + static_cast<std::ptrdiff_t>(std::min(most, signals_.size()))};
}

void UsageQueue::push(JsonValue signal) {
  if (signals_.size() == kMostSignals) signals_.erase(signals_.begin());
  signals_.push_back(std::move(signal));
  save();
}

void UsageQueue::pop(const JsonArray& sent) {
  for (const auto& signal : sent)
    if (!signals_.empty() && signals_.front() == signal) signals_.erase(signals_.begin());
  save();
}

void UsageQueue::clear() {
  if (signals_.empty()) return;
  signals_.clear();
  save();
}

// Signals are of no worth to the user: one that cannot be kept is not worth a word.
void UsageQueue::save() {
  if (signals_.empty()) {
    (void)files_.remove(file_);
    return;
  }
  (void)files_.makeFolders(file_.parent_path());
  (void)files_.replace(file_, writeJson(JsonObject{{"version", kVersion}, {"signals", signals_}}), kOwnerOnly);
}

}  // namespace corvane
