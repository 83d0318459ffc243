#include "core/history/json_lines.h"

#include <string>

namespace corvane {

Status LineAppender::append(Files& files, const std::filesystem::path& path, std::string_view line, mode_t mode) {
  if (!files.exists(path)) {
    if (auto made = files.makeFolders(path.parent_path()); !made) return made;
    endsWhole_ = true;
  } else if (!endsWhole_) {
    const auto text = files.read(path);
    if (!text) return std::unexpected(text.error());
    endsWhole_ = text->empty() || text->ends_with('\n');
  }
  std::string bytes = endsWhole_ ? "" : "\n";
  bytes += line;
  bytes += '\n';
  auto appended = files.append(path, bytes, mode);
  endsWhole_ = appended.has_value();
  return appended;
}

}  // namespace corvane
