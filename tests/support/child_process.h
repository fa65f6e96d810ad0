// A program that runs while the object lives, with its output in a file.
#ifndef MMSBRIX_TESTS_SUPPORT_CHILD_PROCESS_H
#define MMSBRIX_TESTS_SUPPORT_CHILD_PROCESS_H

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

namespace mmsbrix::test {

class ChildProcess {
 public:
  /// Starts a program found on the path.  Standard output and error go to `outputFile`.
  ChildProcess(std::vector<std::string> arguments, const std::string& outputFile) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, outputFile.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
    if (::posix_spawnp(&pid_, pointers[0], &files, nullptr, pointers.data(), environ) != 0) {
      pid_ = -1;
    }
    posix_spawn_file_actions_destroy(&files);
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    wait();
  }

  /// False when there is no such program.
  [[nodiscard]] bool started() const noexcept { return pid_ > 0; }
  /// Ends it at once, with no chance to finish anything.
  void kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    wait();
  }
  /// Waits for its end; true when its exit status is 0.
  bool wait() {
    int status = -1;
    return pid_ > 0 && ::waitpid(std::exchange(pid_, -1), &status, 0) > 0 && status == 0;
  }

 private:
  pid_t pid_ = -1;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_CHILD_PROCESS_H
