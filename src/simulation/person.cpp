#include "simulation/person.h"

#include <algorithm>
#include <chrono>

namespace corvane {

namespace {

constexpr Duration kReadsConfirmation = 3s;

}  // namespace

Person::Person(const StatusViewModel& model, const WorkflowServices& services, DeferralPromptController& prompt,
               Diary& diary)
    : model_(model), services_(services), prompt_(prompt), diary_(diary) {
  changes_ = prompt_.observe([this] { noticed(); });
}

bool Person::isThere(Date date) const {
  const auto calendar = services_.locale.calendar();
  const auto weekday = calendar.weekday(date);
  if (!habits.weekends && (weekday == 1 || weekday == 7)) return false;
  const auto minute = calendar.local(date).sinceMidnight.count();
  return minute >= habits.comes && minute < habits.leaves;
}

Date Person::nextArrival(Date date) const {
  const auto calendar = services_.locale.calendar();
  std::chrono::sys_days day = calendar.local(date).day;
  while (true) {
    const auto arrival = calendar.at(day, std::chrono::minutes(habits.comes));
    if (arrival > date && isThere(arrival)) return arrival;
    day += std::chrono::days(1);
  }
}

void Person::noticed() {
  if (seen_ == generation() || habits.answer == Habits::Answer::ignores || !prompt_.page().visible) return;
  seen_ = generation();
  const auto now = services_.clock.now();
  if (isThere(now))
    thought_ = services_.main.after(habits.thinks, [this] { answer(); });
  else
    thought_ = services_.main.at(nextArrival(now) + habits.thinks, [this] { answer(); });
}

void Person::answer() {
  if (!prompt_.page().visible) return;
  if (seen_ != generation()) return noticed();
  // The thought may have ended after hours.
  if (const auto now = services_.clock.now(); !isThere(now)) {
    thought_ = services_.main.at(nextArrival(now) + habits.thinks, [this] { answer(); });
    return;
  }
  switch (habits.answer) {
    case Habits::Answer::defers:
      return defer();
    case Habits::Answer::installs:
      return install();
    case Habits::Answer::closes:
      return close();
    case Habits::Answer::ignores:
      return;
  }
}

void Person::defer() {
  const auto& page = prompt_.page();
  if (!page.visible || !page.defer.visible) return;
  if (std::ranges::find(page.options, habits.minutes, &ReminderOption::minutes) != page.options.end())
    prompt_.select(habits.minutes);
  pressedDefer_ = generation();
  prompt_.defer();
}

void Person::install() {
  saidInstall_ = generation();
  prompt_.install();
  if (prompt_.page().confirmation.visible)
    thought_ = services_.main.after(kReadsConfirmation, [this] { prompt_.accept(); });
}

void Person::close() {
  const auto& page = prompt_.page();
  if (!page.visible) return;
  diary_.write(page.mayClose ? "closed the panel" : "could not close the panel");
  prompt_.close();
}

}  // namespace corvane
