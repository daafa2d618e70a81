#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

#include "support/SampleFolder.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

/// `mrziphoto watch` at work on a library, its answers at the other end of a pipe.
class Watcher {
 public:
  explicit Watcher(const std::string& library) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    _process = fork();
    if (_process == 0) {
      dup2(ends[1], STDOUT_FILENO);
      close(ends[0]);
      close(ends[1]);
      execl(MRZIPHOTO_TOOL, MRZIPHOTO_TOOL, "watch", library.c_str(), "--quiet", "--format",
            "jsonl", nullptr);
      _exit(127);
    }
    close(ends[1]);
    _answers.reset(fdopen(ends[0], "r"));
  }
  ~Watcher() {
    if (_process > 0) {
      kill(_process, SIGKILL);
      waitpid(_process, nullptr, 0);
    }
  }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  /// Waits until the library was loaded and its folder is listened to; false when the program ended
  /// before that.
  [[nodiscard]] bool isListening() const {
    const std::string descriptors = "/proc/" + std::to_string(_process) + "/fd";
    while (waitpid(_process, nullptr, WNOHANG) == 0) {
      std::error_code gone;
      for (const auto& entry : fs::directory_iterator(descriptors, gone)) {
        if (fs::read_symlink(entry.path(), gone).string().find("inotify") != std::string::npos) {
          return true;
        }
      }
      std::this_thread::yield();
    }
    return false;
  }
  /// The next line; empty when there is none any more.
  [[nodiscard]] std::string line() const {
    std::array<char, 1000> text{};
    return std::fgets(text.data(), static_cast<int>(text.size()), _answers.get()) != nullptr
               ? text.data()
               : "";
  }
  /// Interrupts the program; answers its exit status, -1 when it did not exit by itself.
  [[nodiscard]] int interrupt() {
    int status = 0;
    kill(_process, SIGINT);
    waitpid(_process, &status, 0);
    _process = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  pid_t _process = 0;
  std::unique_ptr<std::FILE, Closer> _answers;
};

/// Made-up libraries of 7 and of 30 photos, in folders named after that.
void writeTwoLibraries(const TemporaryFolder& folder, std::int32_t version) {
  for (const std::uint32_t photos : {7U, 30U}) {
    writeSample(folder / std::to_string(photos), version, photos);
  }
}

TEST(Watch, TellsTheCountsOfARewrittenLibrary) {
  const TemporaryFolder folder;
  writeTwoLibraries(folder, 60);
  Watcher watcher(folder / "7");
  ASSERT_TRUE(watcher.isListening());
  fs::copy(folder / "30", folder / "7",
           fs::copy_options::recursive | fs::copy_options::overwrite_existing);
  // A library that is seen half-written may be told as well, but not last.
  std::string line = watcher.line();
  while (!line.empty() && line.find("\"photos\":30,") == std::string::npos) {
    line = watcher.line();
  }
  EXPECT_NE(line, "") << "the program ended without telling of the change";
  EXPECT_EQ(watcher.interrupt(), 0);
}

TEST(Watch, TellsOnlyWhatChangesTheLibrary) {
  for (const bool isNeverStill : {false, true}) {
    const TemporaryFolder folder;
    writeTwoLibraries(folder, 151);
    // Left over from an older iPhoto; the date of what was not loaded always differs.
    folder.write("7/Dir.data", "old");
    Watcher watcher(folder / "7");
    ASSERT_TRUE(watcher.isListening());
    folder.write("7/other", "");
    std::jthread busy;
    if (isNeverStill) {
      busy = std::jthread([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
          folder.write("7/other", "");
          std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
      });
    } else {
      // Time enough to tell what it should not.
      std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    fs::rename(folder / "30/AlbumData.xml", folder / "7/AlbumData.xml");
    const std::string line = watcher.line();
    EXPECT_NE(line.find("\"photos\":30,"), std::string::npos) << line << isNeverStill;
  }
}

}  // namespace
}  // namespace mrziphoto
