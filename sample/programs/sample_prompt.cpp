// The sample's prompt, which runs under the name osascript: "osascript SECONDS TITLE BUTTON BUTTON". It waits
// for an answer and prints it: told to quit it is the first button, SIGUSR1 the last. With no answer in
// SECONDS (0: no limit) it ends with 1 and prints nothing.
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  sigset_t answers;
  sigemptyset(&answers);
  sigaddset(&answers, SIGTERM);
  sigaddset(&answers, SIGINT);
  sigaddset(&answers, SIGUSR1);
  sigprocmask(SIG_BLOCK, &answers, nullptr);
  const timespec limit{atol(argv[1]), 0};
  const int answer = sigtimedwait(&answers, nullptr, limit.tv_sec > 0 ? &limit : nullptr);
  if (answer < 0) return 1;
  puts(answer == SIGUSR1 ? argv[argc - 1] : argv[3]);
  return 0;
}
