// The main executable of the sample's applications: a process that stays until it is told to quit. Started
// with --stubborn it does not listen to that and has to be killed.
#include <signal.h>
#include <string.h>
#include <unistd.h>

int main(int argc, char** argv) {
  const bool stubborn = argc > 1 && strcmp(argv[1], "--stubborn") == 0;
  sigset_t quit;
  sigemptyset(&quit);
  sigaddset(&quit, SIGTERM);
  sigaddset(&quit, SIGINT);
  sigprocmask(SIG_BLOCK, &quit, nullptr);
  int signal = 0;
  do {
    sigwait(&quit, &signal);
  } while (stubborn);
  return 0;
}
