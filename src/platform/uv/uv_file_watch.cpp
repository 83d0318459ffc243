#include "platform/uv/uv_file_watch.h"

#include <sys/stat.h>
#include <uv.h>

#include <memory>
#include <utility>

namespace corvane {

namespace {

struct Folder {
  std::filesystem::path path;
  dev_t device = 0;
  ino_t inode = 0;
  friend bool operator==(const Folder&, const Folder&) = default;
};

// The folder itself or the nearest one above it that exists.
Folder nearestExisting(std::filesystem::path folder) {
  for (;; folder = folder.parent_path()) {
    struct stat found {};
    if (::stat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode))
      return {.path = folder, .device = found.st_dev, .inode = found.st_ino};
    if (!folder.has_relative_path()) return {.path = folder};
  }
}

// One watch. It keeps itself alive until libuv has given up its handle.
class FolderEvents : public std::enable_shared_from_this<FolderEvents> {
 public:
  FolderEvents(MainQueue& main, std::filesystem::path folder, std::function<void()> changed)
      : main_(main), target_(std::move(folder)), changed_(std::move(changed)) {}

  void start(uv_loop_t* loop) {
    uv_fs_event_init(loop, &handle_);
    handle_.data = this;
    // Watching is nobody's reason to run.
    uv_unref(reinterpret_cast<uv_handle_t*>(&handle_));
    self_ = shared_from_this();
    arm();
  }

  void stop() {
    if (!std::exchange(live_, false)) return;
    uv_close(reinterpret_cast<uv_handle_t*>(&handle_),
             [](uv_handle_t* handle) { static_cast<FolderEvents*>(handle->data)->self_.reset(); });
  }

 private:
  void arm() {
    // Again when a folder came or went between looking and watching.
    for (auto folder = nearestExisting(target_); folder != watched_; folder = nearestExisting(target_)) {
      uv_fs_event_stop(&handle_);
      watched_ = folder;
      const auto heard = [](uv_fs_event_t* handle, const char*, int, int) {
        static_cast<FolderEvents*>(handle->data)->heard();
      };
      uv_fs_event_start(&handle_, heard, folder.path.c_str(), 0);
    }
  }

  void heard() {
    if (!live_ || std::exchange(pending_, true)) return;
    main_.post([self = shared_from_this()] { self->look(); });
  }

  void look() {
    pending_ = false;
    if (!live_) return;
    const bool wasThere = watched_.path == target_;
    arm();
    if (wasThere || watched_.path == target_) changed_();
  }

  MainQueue& main_;
  std::filesystem::path target_;
  std::function<void()> changed_;
  uv_fs_event_t handle_;
  Folder watched_;
  bool live_ = true;
  bool pending_ = false;
  std::shared_ptr<FolderEvents> self_;
};

}  // namespace

Lease UvFileWatch::watch(const std::filesystem::path& folder, std::function<void()> changed) {
  const auto events = std::make_shared<FolderEvents>(main_, folder.lexically_normal(), std::move(changed));
  events->start(loop_);
  return Lease([events] { events->stop(); });
}

}  // namespace corvane
