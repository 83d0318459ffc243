// Receipts out of the bytes of their file. A file of 100,000 lines is read often enough to be worth a reader
// of its own beside the codec of single records.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "core/records/history_records.h"

namespace corvane {

// The last line first, since receipts are appended as they happen and wanted newest first. Lines that are no whole
// receipt are left out and told to `damaged(line, reason)`. With `only`, just that label's receipts; lines of other
// labels are then not looked at further.
[[nodiscard]] std::vector<PatchingReceipt> parseReceipts(
    std::string_view text, const Label* only, const std::function<void(std::size_t, std::string_view)>& damaged);

}  // namespace corvane
