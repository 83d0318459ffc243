// Which process acts on a request: the one that already shows notifications, or this one.
#pragma once

#include <string>

#include "base/error.h"
#include "platform/sole_process.h"

namespace corvane {

enum class NotifierPart { acts, handedOver };

// An other one that ends while it is asked is no failure: this process tries to take its place, some times over.
[[nodiscard]] Result<NotifierPart> takePart(SoleProcess& sole, const std::string& encodedRequest);

}  // namespace corvane
