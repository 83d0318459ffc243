// What one installed bundle tells of itself: its property list, who signed it, whether the store put it there.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"
#include "core/discovery/mach_o_signature.h"

namespace corvane {

// Strings of Info.plist's top level; a key of another kind is absent.
struct BundleProperties {
  std::optional<std::string> identifier;    // CFBundleIdentifier
  std::optional<std::string> name;          // CFBundleName
  std::optional<std::string> shortVersion;  // CFBundleShortVersionString
  std::optional<std::string> version;       // CFBundleVersion
  std::optional<std::string> executable;    // CFBundleExecutable
  std::optional<std::string> custom;        // the key that was asked for, where it is none of the above
  friend bool operator==(const BundleProperties&, const BundleProperties&) = default;
};

// A property list above this size is no Info.plist.
inline constexpr std::size_t kInfoPlistLimit = 4U << 20U;

// Reads the bytes of an Info.plist, XML or binary. Fails where parsePlist() fails, and for a list that is no
// dictionary.
[[nodiscard]] Result<BundleProperties> parseBundleProperties(std::string_view bytes, std::string_view customKey = {});

struct BundleFacts {
  BundleProperties properties;
  std::optional<CodeSignature> signature;  // absent when unsigned, damaged or unreadable
  std::string signatureProblem;            // for the log; empty when there is a signature or simply none
  bool hasStoreReceipt = false;            // Contents/_MASReceipt/receipt is there

  // The value of a key of Info.plist that was read, the custom one included.
  [[nodiscard]] std::optional<std::string> value(std::string_view key, std::string_view customKey) const;
};

// Reads Contents/Info.plist, the signature of the main executable (or Contents/_CodeSignature/CodeDirectory
// where that is no Mach-O file) and looks for the store's receipt. Fails with a text that names the property list
// when it is missing or damaged; an executable that cannot be read only leaves `signature` absent. A bundle often
// belongs to somebody who may read less than we: links that lead out of it are not followed, and only regular files are
// opened. Any thread.
[[nodiscard]] Result<BundleFacts> readBundle(const std::filesystem::path& bundle, std::string_view customKey = {},
                                             SignatureDetail detail = SignatureDetail::names);

// The file of the application's icon, for the row of an application that is drawn: CFBundleIconFile, with ".icns" where
// it has no extension, below Contents/Resources. Absent where the bundle names none, or one that is not there. Reads
// the property list each time, so whoever draws keeps the answer.
[[nodiscard]] std::optional<std::filesystem::path> bundleIconFile(const std::filesystem::path& bundle);

}  // namespace corvane
