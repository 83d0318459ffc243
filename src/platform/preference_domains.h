// The two property lists of a preference domain: the user's own and the managed one over it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "base/error.h"
#include "base/lease.h"
#include "base/plist.h"

namespace corvane {

// Snapshots are immutable and shared: equal `version` means the same content, so what was derived from a
// snapshot may be kept until the version moves.
struct DomainSnapshot {
  std::shared_ptr<const PlistDict> values;  // never null; empty when the file is missing or damaged
  std::uint64_t version = 0;
};

// Any thread, but `watch`. Reads see every earlier write of this process at once, and another program's
// after its rename. A damaged file counts as empty, is told to the log once, and is set aside (not lost)
// before a whole new one replaces it.
class PreferenceDomains {
 public:
  virtual ~PreferenceDomains() = default;
  [[nodiscard]] virtual DomainSnapshot user() const = 0;
  [[nodiscard]] virtual DomainSnapshot managed() const = 0;

  // Those that the snapshots would bear, for whoever only wants to know whether something has changed.
  struct Versions {
    std::uint64_t user = 0;
    std::uint64_t managed = 0;
    friend bool operator==(const Versions&, const Versions&) = default;
  };
  [[nodiscard]] virtual Versions versions() const { return {.user = user().version, .managed = managed().version}; }

  // Reads the user's file under a lock between processes, lets `change` edit it, and replaces it
  // atomically when it changed. An XML file stays XML, a binary one binary; a new one is binary.
  virtual Status changeUser(const std::function<void(PlistDict&)>& change) = 0;

  // Main thread. Calls back there, once a turn, after either file was changed by another program.
  virtual Lease watch(std::function<void()> changed) = 0;
};

}  // namespace corvane
