// Runs a program and says what it took: measure OUTPUT PROGRAM ARGUMENT... The processor's seconds,
// those of the clock, peak memory in kilobytes and the status, in a line. A small program has to
// start it: to the system, what the starting one held and did is the started one's, too.

#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    return 2;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, argv[1], O_WRONLY | O_CREAT | O_TRUNC,
                                   0666);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  const auto begun = std::chrono::steady_clock::now();
  pid_t process = 0;
  if (posix_spawnp(&process, argv[2], &actions, nullptr, argv + 2, environ) != 0) {
    return 1;
  }
  int status = 0;
  struct rusage usage {};
  wait4(process, &status, 0, &usage);
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begun;
  std::printf("%.6f %.6f %ld %d\n", secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
              wall.count(), usage.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : 128);
  return 0;
}
