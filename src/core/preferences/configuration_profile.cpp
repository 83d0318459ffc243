#include "core/preferences/configuration_profile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/ascii.h"
#include "core/places.h"
#include "core/preferences/nearest_name.h"

namespace corvane {
namespace {

using Severity = SettingFinding::Severity;

constexpr auto kDomain = CorvaneConstants::preferenceDomain;
constexpr std::string_view kManagedClient = "com.apple.ManagedClient.preferences";
// What a payload holds beside its settings.
constexpr auto kPayloadKeys =
    std::to_array<std::string_view>({"PayloadContent", "PayloadDescription", "PayloadDisplayName", "PayloadEnabled",
                                     "PayloadIdentifier", "PayloadOrganization", "PayloadRemovalDisallowed",
                                     "PayloadScope", "PayloadType", "PayloadUUID", "PayloadVersion"});

std::unexpected<Error> refused(std::string text) { return failure("CRVProfile", 1, std::move(text)); }

const PlistValue* member(const PlistDict& dict, std::string_view key) {
  const auto found = dict.find(key);
  return found == dict.end() ? nullptr : &found->second;
}

std::string_view textAt(const PlistDict& dict, std::string_view key) {
  const auto* value = member(dict, key);
  return value ? value->string().value_or("") : "";
}

class Reader {
 public:
  ProfileSettings read{.profile = true};
  std::vector<std::string> otherDomains;
  bool found = false;

  void payload(const PlistDict& payload) {
    const auto type = textAt(payload, "PayloadType");
    if (type == kDomain) {
      auto settings = payload;
      for (const auto key : kPayloadKeys) settings.erase(std::string(key));
      take(settings);
    } else if (type == kManagedClient) {
      managedClient(payload);
    } else {
      otherDomains.emplace_back(type);
    }
  }

 private:
  void note(Severity severity, std::string key, std::string reason, std::string fix) {
    read.findings.push_back({severity, std::move(key), std::move(reason), std::move(fix)});
  }

  void take(const PlistDict& settings) {
    found = true;
    for (const auto& [key, value] : settings) {
      const auto [place, fresh] = read.settings.try_emplace(key, value);
      if (!fresh && place->second != value)
        note(Severity::error, key, "Two payloads set it to different values, and either may win.",
             "Leave it in one payload.");
    }
  }

  void managedClient(const PlistDict& payload) {
    const auto* content = member(payload, "PayloadContent");
    if (!content || !content->dict()) return;
    for (const auto& [domain, ways] : *content->dict()) {
      if (domain != kDomain || !ways.dict())
        otherDomains.push_back(domain);
      else
        for (const auto& [way, entries] : *ways.dict()) forced(way, entries);
    }
  }

  // Only what is forced is managed; the other ways put a value into the user's own domain.
  void forced(const std::string& way, const PlistValue& entries) {
    found = true;
    if (way != "Forced")
      return note(Severity::error, way, "Only forced settings are managed; these would be the user's own, if anything.",
                  "Put them under Forced.");
    for (const auto& entry : entries.array() ? *entries.array() : PlistArray()) {
      const auto* settings = entry.dict() ? member(*entry.dict(), "mcx_preference_settings") : nullptr;
      if (settings && settings->dict())
        take(*settings->dict());
      else
        note(Severity::error, way, "One of its entries has no dictionary mcx_preference_settings.",
             "Put the settings into one.");
    }
  }
};

std::string nothingOfOurs(const std::vector<std::string>& others) {
  std::string text = fmt::format("The profile sets nothing in {}.", kDomain);
  for (const auto& other : others)
    if (equalIgnoringCase(other, kDomain)) return text + " A payload is for \"" + other + "\"; capital letters count.";
  if (!others.empty()) text += fmt::format(" Its first payload is for \"{}\".", shown(others.front()));
  return text + fmt::format(" Give a payload the PayloadType {}.", kDomain);
}

}  // namespace

Result<ProfileSettings> profileSettings(const PlistValue& root) {
  const auto* dict = root.dict();
  if (!dict) return refused("The property list is no dictionary, so it holds no settings.");
  if (dict->contains("EncryptedPayloadContent"))
    return refused("The profile's content is encrypted. Check it before it is encrypted.");
  if (textAt(*dict, "PayloadType") == kDomain) {
    Reader reader;
    reader.payload(*dict);
    return std::move(reader.read);
  }
  const auto* content = member(*dict, "PayloadContent");
  if (!content && textAt(*dict, "PayloadType").empty()) return ProfileSettings{.settings = *dict};
  if (!content || !content->array()) return refused("The profile has no list of payloads, PayloadContent.");
  Reader reader;
  for (const auto& payload : *content->array())
    if (payload.dict()) reader.payload(*payload.dict());
  if (!reader.found) return refused(nothingOfOurs(reader.otherDomains));
  return std::move(reader.read);
}

}  // namespace corvane
