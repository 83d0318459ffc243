// Why a call over a bus failed, as a value.
#pragma once

#include "base/error.h"

namespace sdbus {
class Error;
}

namespace corvane {

// Codes in the domain "CRVBus".
struct BusError {
  static constexpr const char* domain = "CRVBus";
  static constexpr int noBus = 1;       // none there, none that lets us in, or it was lost
  static constexpr int noService = 2;   // nobody has that name, and nobody could be started
  static constexpr int noAnswer = 3;    // not within the limit
  static constexpr int refused = 4;     // the service answered with an error
  static constexpr int unreadable = 5;  // what was sent or came back is not of the agreed form
  // Two kinds of refusal that a caller may tell from the others.
  static constexpr int forbidden = 6;  // the service does not let this user, or not without asking somebody
  static constexpr int unknown = 7;    // the service has not what it was asked about

  [[nodiscard]] static constexpr bool isRefusal(int code) {
    return code == refused || code == forbidden || code == unknown;
  }
};

// The code by the error's name; its words for the text, or the name where it brings none.
[[nodiscard]] Error busErrorOf(const sdbus::Error& error);

}  // namespace corvane
