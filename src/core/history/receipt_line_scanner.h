// A receipt line as the helper writes it, read in one pass over its bytes. It knows that one form and nothing
// else of JSON: what it does not recognise at once is for the full parser.
#pragma once

#include <optional>
#include <string_view>

#include "core/records/history_records.h"

namespace corvane {

enum class ScannedLine { receipt, otherLabel, notRecognised };

// Takes compact lines with the fields in the order of `toJson`, plain ASCII texts without escapes and dates in
// UTC. With `only`, a line of another label is not looked at further. `out` is whole when this gives `receipt`,
// and may be half filled otherwise.
[[nodiscard]] ScannedLine scanReceiptLine(std::string_view line, const Label* only, PatchingReceipt& out);

}  // namespace corvane
