// The vendors' folder: version pages, downloads, and which of them are slow, fail or lead elsewhere.
#pragma once

#include <filesystem>
#include <string>

#include "sample/catalogue.h"

namespace corvane::sample {

// Writes what the vendor of one label serves below `vendors`. `program` is the executable of runnable bundles.
void putVendor(const std::filesystem::path& vendors, const LabelSpec& label, const std::string& program);

}  // namespace corvane::sample
