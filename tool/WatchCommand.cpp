// The command that waits for a library to change.

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <poll.h>
#include <string>
#include <sys/inotify.h>
#include <unistd.h>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/platform/Date.h>
#include <MRZiPhoto/platform/Format.h>

#include "Commands.h"
#include "FieldTable.h"
#include "Library.h"

namespace mrziphoto::tool {
namespace {

// Writing a library takes several steps; it is looked at when it has been still for so long.
constexpr int kStillMilliseconds = 300;
// Without news of the folder, or where it cannot tell any, the library is looked at so often.
constexpr int kPollMilliseconds = 2000;

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
  [[nodiscard]] bool wait(int milliseconds) const {
    pollfd waiting{_descriptor, POLLIN, 0};
    // poll passes over a negative descriptor, and then only waits.
    if (poll(&waiting, 1, milliseconds) <= 0) {
      return false;
    }
    std::array<char, 4096> events{};
    return read(_descriptor, events.data(), events.size()) > 0;
  }

 private:
  int _descriptor;
};

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
  out += format("%@: %u photos, %u rolls, %u albums, %u keywords\n", Date::now().description(),
                database.photos().size(), database.rolls().size(), database.albums().size(),
                database.keywords().size());
}

}  // namespace

void watch(Session& session) {
  endOnInterrupt();
  openLibrary(session);
  Database& database = *session.database;
  const FolderNews news(database.directory());
  const bool forPerson = session.arguments.format == Format::table;
  const auto out = forPerson ? nullptr
                             : RecordWriter::to(session.output, session.arguments.format,
                                                Shape::list, fieldNames<Database>(kCounts));
  while (interrupted == 0) {
    if (news.wait(kPollMilliseconds)) {
      while (interrupted == 0 && news.wait(kStillMilliseconds)) {
      }
    }
    if (interrupted != 0 || !database.reloadIfChanged()) {
      continue;
    }
    if (forPerson) {
      writeLine(session.output.text(), database);
    } else {
      writeRecord<Database>(*out, kCounts, database);
    }
    session.output.flush();
  }
  if (out) {
    out->finish();
  }
}

}  // namespace mrziphoto::tool
