// Looks, while a run is shown, for the dialog with which Installomator asks to quit an application, and brings
// it forward when it hides behind other windows. It never closes it.
#pragma once

#include <set>

#include "workflow/room_context.h"

namespace corvane {

class BlockingPromptWatch {
 public:
  static constexpr Duration kInterval = 2s;
  // A dialog that the user has put away on purpose comes back, but not at every look.
  static constexpr Duration kRaiseInterval = 15s;

  BlockingPromptWatch(const RoomContext& context, BlockingPromptFields& fields);

  // A start is a restart. Prompts that are on screen already are nobody's.
  void startBlockingPromptWatch(std::string appName);
  void stopBlockingPromptWatch();
  void rename(std::string appName);

 private:
  void checkBlockingPrompt();
  // Brings the prompt forward when that is due. Gives whether the time of the last raise moved.
  bool keepInFront(const RunningProcess& prompt);
  void setName(std::optional<std::string> name);
  [[nodiscard]] std::vector<RunningProcess> osascriptApplications() const;

  RoomContext c_;
  BlockingPromptFields& fields_;
  std::string appName_;
  std::set<pid_t> pidsAtStart_;
  std::optional<Date> lastRaise_;
  Lease watch_;
};

}  // namespace corvane
