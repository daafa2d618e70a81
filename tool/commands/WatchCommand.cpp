// The command that waits for a library to change.

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <fmt/format.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/values/Date.h>

#include "../output/FieldTable.h"
#include "Commands.h"
#include "Library.h"
#include "Notices.h"

namespace mrziphoto::tool {
namespace {

// Writing a library takes several steps; it is looked at when its folder has been still for this
// long, or when that does not happen for a while: other files may lie there, too.
constexpr int kStillMilliseconds = 300;
constexpr std::chrono::seconds kLongestWait{2};
// Without news of the folder, or where it cannot tell any, the library is looked at this often.
constexpr int kPollMilliseconds = 2000;

// What a library is loaded from.
constexpr std::array<std::string_view, 5> kLibraryFiles{
    "Library6.iPhoto", "Library.iPhoto", "Library.data", "Dir.data", "AlbumData.xml"};

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int /*signal*/) { interrupted = 1; }

void endOnInterrupt() {
  struct sigaction action {};
  action.sa_handler = interrupt;  // without SA_RESTART, so that waiting ends at once
  for (const int signal : {SIGINT, SIGTERM}) {
    sigaction(signal, &action, nullptr);
  }
}

/// News of the files in a folder.
class FolderNews {
 public:
  explicit FolderNews(const std::string& folder) : _descriptor(inotify_init1(IN_CLOEXEC)) {
    constexpr std::uint32_t kChanges =
        IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE | IN_DELETE | IN_ATTRIB;
    if (_descriptor >= 0 && inotify_add_watch(_descriptor, folder.c_str(), kChanges) < 0) {
      close(_descriptor);
      _descriptor = -1;
    }
  }
  ~FolderNews() {
    if (_descriptor >= 0) {
      close(_descriptor);
    }
  }
  FolderNews(const FolderNews&) = delete;
  FolderNews& operator=(const FolderNews&) = delete;

  /// True when there was news; false when the time ran out or an interrupt came.
  [[nodiscard]] bool comesWithin(int milliseconds) const {
    pollfd waiting{_descriptor, POLLIN, 0};
    // poll passes over a negative descriptor, and then only waits.
    if (poll(&waiting, 1, milliseconds) <= 0) {
      return false;
    }
    std::array<char, 4096> events{};
    return read(_descriptor, events.data(), events.size()) > 0;
  }

  /// Waits for news, and then until the folder is still again.
  void wait() const {
    if (!comesWithin(kPollMilliseconds)) {
      return;
    }
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    while (interrupted == 0 && std::chrono::steady_clock::now() < end &&
           comesWithin(kStillMilliseconds)) {
    }
  }

 private:
  int _descriptor;
};

/// What tells one writing of a file from the next.
struct FileState {
  dev_t device = 0;
  ino_t number = 0;
  off_t size = 0;
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  static FileState of(const std::string& path) {
    struct stat status {};
    if (stat(FileManager::locate(path).value_or(path).c_str(), &status) != 0) {
      return {};
    }
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
  }
  bool operator==(const FileState& other) const = default;
};

using LibraryState = std::array<FileState, kLibraryFiles.size()>;

LibraryState stateOf(const std::string& library) {
  LibraryState state;
  std::ranges::transform(kLibraryFiles, state.begin(), [&](std::string_view name) {
    return FileState::of(path::join(library, name));
  });
  return state;
}

/// True when the library is no longer as `state` says, and was loaded anew.
bool reloadIfWritten(TVQiPhotoDatabase& database, LibraryState& state) {
  // The database alone would load a library again and again whose catalogue file it cannot read, or
  // that has a "Dir.data" which it does not need.
  const LibraryState found = stateOf(database.directory());
  if (found == state) {
    return false;
  }
  state = found;
  return database.reloadIfChanged();
}

using Database = TVQiPhotoDatabase;
constexpr std::array<FieldRow<Database>, 6> kCounts{{
    {"changed", [](RecordWriter& out, const Database& /*it*/) { out.date(Date::now()); }},
    {"photos",
     [](RecordWriter& out, const Database& it) { out.unsignedInteger(it.photos().size()); }},
    {"rollRecords",
     [](RecordWriter& out, const Database& it) { out.unsignedInteger(it.rollRecRefs().size()); }},
    {"rolls",
     [](RecordWriter& out, const Database& it) { out.unsignedInteger(it.rolls().size()); }},
    {"albums",
     [](RecordWriter& out, const Database& it) { out.unsignedInteger(it.albums().size()); }},
    {"keywords",
     [](RecordWriter& out, const Database& it) { out.unsignedInteger(it.keywords().size()); }},
}};

/// One line for a person; the formats for programs write their own.
void writeLine(std::string& out, const Database& database) {
  out += fmt::format("{}: {} photos, {} rolls, {} albums, {} keywords\n", Date::now().description(),
                     database.photos().size(), database.rolls().size(), database.albums().size(),
                     database.keywords().size());
}

}  // namespace

void watch(Session& session) {
  endOnInterrupt();
  LibraryState state = stateOf(libraryFolder(session.arguments));
  openLibrary(session);
  Database& database = *session.database;
  tellNotices(session);
  const FolderNews news(database.directory());
  const bool forPerson = session.arguments.format == Format::table;
  const auto out = forPerson ? nullptr
                             : RecordWriter::to(session.output, session.arguments.format,
                                                Shape::list, fieldNames<Database>(kCounts));
  while (interrupted == 0) {
    news.wait();
    if (interrupted != 0 || !reloadIfWritten(database, state)) {
      continue;
    }
    if (forPerson) {
      writeLine(session.output.text(), database);
    } else {
      writeRecord<Database>(*out, kCounts, database);
    }
    session.output.flush();
    tellNotices(session);
  }
  if (out) {
    out->finish();
  }
}

}  // namespace mrziphoto::tool
