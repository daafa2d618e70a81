// The command that looks whether a library's files are there.

#include <algorithm>
#include <array>
#include <cstddef>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/files/FileFailure.h>
#include <MRZiPhoto/files/ReadingRules.h>
#include <MRZiPhoto/photos/ImageRecRef.h>

#include "../output/Failure.h"
#include "../output/FieldTable.h"
#include "../output/Progress.h"
#include "../output/Values.h"
#include "../pictures/Pictures.h"
#include "Commands.h"
#include "Library.h"
#include "NamedFiles.h"
#include "PhotoCheck.h"

namespace mrziphoto::tool {
namespace {

void writeState(RecordWriter& out, const std::optional<FileState>& state) {
  if (state) {
    out.text(nameOf(*state));
  } else {
    out.null();
  }
}

void writeNumber(RecordWriter& out, std::string_view name, std::size_t number) {
  out.name(name);
  out.unsignedInteger(number);
}

void writeCounts(RecordWriter& out, const CheckCounts& counts) {
  out.beginObject();
  writeNumber(out, "photos", counts.photos);
  for (std::size_t i = 0; i < kPhotoFiles; ++i) {
    const FileCounts& files = counts.files[i];
    out.name(kPhotoFileNames[i].many);
    out.beginObject();
    writeNumber(out, "checked", files.checked());
    for (std::size_t state = 0; state < kFileStates.size(); ++state) {
      writeNumber(out, kFileStates[state], files.inState[state]);
    }
    out.endObject();
  }
  writeNumber(out, "thumbnailsInCache", counts.inCache);
  writeNumber(out, "unnamedFiles", counts.unnamedFiles);
  out.endObject();
}

/// What one record tells about: a photo, a file that no photo names, or at the end the counts.
struct Finding {
  std::string_view kind;
  const CheckedPhoto* photo = nullptr;
  const std::string* unnamedFile = nullptr;
  const CheckCounts* counts = nullptr;
};

template <PhotoFile file>
void state(RecordWriter& out, const Finding& finding) {
  writeState(out, finding.photo != nullptr ? finding.photo->file(file).state : std::nullopt);
}

template <PhotoFile file>
void path(RecordWriter& out, const Finding& finding) {
  out.text(finding.photo != nullptr ? finding.photo->file(file).path : std::nullopt);
}

constexpr std::array<FieldRow<Finding>, 11> kFindingFields{{
    {"record", [](RecordWriter& out, const Finding& it) { out.text(it.kind); }},
    {"key",
     [](RecordWriter& out, const Finding& it) {
       writeKey(out, it.photo != nullptr ? it.photo->photo->key() : Value());
     }},
    {"image", state<PhotoFile::image>},
    {"original", state<PhotoFile::original>},
    {"thumbnail", state<PhotoFile::thumbnail>},
    {"thumbnailInCache",
     [](RecordWriter& out, const Finding& it) {
       if (it.photo != nullptr && it.photo->isInCache) {
         out.boolean(*it.photo->isInCache);
       } else {
         out.null();
       }
     }},
    {"imagePath", path<PhotoFile::image>},
    {"originalImagePath", path<PhotoFile::original>},
    {"thumbnailPath", path<PhotoFile::thumbnail>},
    {"unnamedFile",
     [](RecordWriter& out, const Finding& it) {
       out.text(it.unnamedFile != nullptr ? std::optional(*it.unnamedFile) : std::nullopt);
     }},
    {"counts",
     [](RecordWriter& out, const Finding& it) {
       if (it.counts != nullptr) {
         writeCounts(out, *it.counts);
       } else {
         out.null();
       }
     }},
}};

/// For programs: a record for each photo, then one for each file that no photo names, then the
/// counts.
class RecordReport {
 public:
  explicit RecordReport(Session& session)
      : _out(RecordWriter::to(session.output, session.arguments.format, Shape::list,
                              fieldNames<Finding>(kFindingFields))) {}

  void photo(const CheckedPhoto& photo) { write({.kind = "photo", .photo = &photo}); }
  void unnamed(const std::string& path) { write({.kind = "unnamedFile", .unnamedFile = &path}); }
  void counts(const CheckCounts& counts) {
    write({.kind = "counts", .counts = &counts});
    _out->finish();
  }

 private:
  void write(const Finding& finding) { writeRecord<Finding>(*_out, kFindingFields, finding); }

  std::unique_ptr<RecordWriter> _out;
};

std::string counted(std::size_t number, std::string_view what) {
  return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}

/// "24 photos: 24 images = 23 there + 1 missing + 0 unreadable; ..."
std::string sentenceOf(const CheckCounts& counts) {
  std::string text = counted(counts.photos, "photo") + ": ";
  for (std::size_t i = 0; i < kPhotoFiles; ++i) {
    const FileCounts& files = counts.files[i];
    text += counted(files.checked(), kPhotoFileNames[i].one);
    for (std::size_t state = 0; state < kFileStates.size(); ++state) {
      text += fmt::format("{}{} {}", state == 0 ? " = " : " + ", files.inState[state],
                          kFileStates[state]);
    }
    text += i + 1 < kPhotoFiles ? "; " : "";
  }
  return fmt::format("{} ({} of these in the thumbnail cache); {} that no photo names", text,
                     counts.inCache, counted(counts.unnamedFiles, "file"));
}

/// For people: a row for each file with which something is wrong, or for all, and the counts.
class TableReport {
 public:
  explicit TableReport(Session& session)
      : _output(session.output),
        _showsAll(session.arguments.all),
        _out(RecordWriter::to(session.output, Format::table, Shape::list,
                              {"key", "file", "state", "path"})) {}

  void photo(const CheckedPhoto& photo) {
    for (const PhotoFileNames& names : kPhotoFileNames) {
      const CheckedFile& file = photo.file(names.file);
      if (file.isWrong() || (_showsAll && file.state)) {
        const bool isInCache =
            names.file == PhotoFile::thumbnail && photo.isInCache.value_or(false);
        write(photo.photo->key(), names.one,
              std::string(nameOf(*file.state)) + (isInCache ? ", in cache" : ""), file.path);
      }
    }
  }
  void unnamed(const std::string& path) { write({}, "", "unnamed", path); }
  void counts(const CheckCounts& counts) {
    if (_hasRows) {
      _out->finish();
    }
    _output.text() += sentenceOf(counts) + '\n';
  }

 private:
  void write(const Value& key, std::string_view file, const std::string& state,
             const std::optional<std::string>& path) {
    _hasRows = true;
    _out->beginRecord();
    writeKey(*_out, key);
    _out->text(file);
    _out->text(state);
    _out->text(path);
    _out->endRecord();
  }

  Output& _output;
  bool _showsAll;
  bool _hasRows = false;
  std::unique_ptr<RecordWriter> _out;
};

constexpr std::size_t kPhotosAtOnce = 1024;

/// Checks the photos and calls `use` for each of them, in order.
template <class Use>
void forEachChecked(const TVQiPhotoDatabase& database, NamedFiles& named, Use&& use) {
  const auto photos = database.photos().items();
  std::span<const Ref<ImageRecRef>> rest(*photos);
  const auto begin = [&] {
    const auto some = rest.first(std::min(kPhotosAtOnce, rest.size()));
    rest = rest.subspan(some.size());
    return std::make_unique<PhotoCheck>(database, some, named);
  };
  for (std::unique_ptr<PhotoCheck> current = begin(); current;) {
    std::unique_ptr<PhotoCheck> next = rest.empty() ? nullptr : begin();
    std::ranges::for_each(current->finish(), use);
    current = std::move(next);
  }
}

template <class Report>
void checkPhotos(const TVQiPhotoDatabase& database, NamedFiles& named, CheckCounts& counts,
                 Report& report) {
  Progress progress("Checking");
  const std::size_t total = database.photos().size();
  forEachChecked(database, named, [&](const CheckedPhoto& checked) {
    counts.add(checked);
    report.photo(checked);
    progress.show(counts.photos, total);
  });
}

template <class Report>
void listUnnamedFiles(NamedFiles& named, CheckCounts& counts, Report& report) {
  Progress progress("Looking for unnamed files");
  std::size_t lookedAt = 0;
  const auto use = [&](const std::string& path) {
    ++counts.unnamedFiles;
    report.unnamed(path);
  };
  named.forEachUnnamed(use, [&] { progress.show(++lookedAt); });
}

/// Files that no photo names can be told only when all photos are known. Albums do not matter.
bool knowsAllPhotos(const TVQiPhotoDatabase& database) {
  return std::ranges::all_of(database.notices(), [&](const Notice& notice) {
    return notice.file.empty() || notice.file == database.albumDataDirectory() ||
           (notice.file == database.albumDataFile() &&
            database.iPhotoLibraryVersion() <= TVQiPhotoLibrary::kLastCodedVersion);
  });
}

struct Outcome {
  CheckCounts counts;
  std::vector<FileFailure> unreadableFolders;
};

template <class Report>
Outcome checkLibrary(Session& session, Report&& report) {
  const TVQiPhotoDatabase& database = *session.database;
  const ReadingRules::Scope scope(database.readingRules());
  NamedFiles named(database.directory());
  CheckCounts counts;
  const bool searchesUnnamed = knowsAllPhotos(database);
  checkPhotos(database, named, counts, report);
  if (searchesUnnamed) {
    listUnnamedFiles(named, counts, report);
  } else {
    session.notices.push_back(
        {fmt::format("files that no photo of the library '{}' names were not looked for, since not "
                     "all photos are known",
                     database.directory()),
         database.directory(),
         {}});
  }
  report.counts(counts);
  return {counts, named.unreadableFolders()};
}

/// Folders that are there, and yet cannot be read.
void noteFolders(Session& session, const std::vector<FileFailure>& folders) {
  if (!folders.empty()) {
    session.notices.push_back(
        {fmt::format("{} could not be searched for files that no photo names, the first because {}",
                     counted(folders.size(), "folder"), folders.front().sentence()),
         folders.front().path,
         {}});
  }
}

}  // namespace

void check(Session& session) {
  expectPictures();
  openLibrary(session);
  expectPhotos(session);
  const Outcome outcome = session.arguments.format == Format::table
                              ? checkLibrary(session, TableReport(session))
                              : checkLibrary(session, RecordReport(session));
  noteFolders(session, outcome.unreadableFolders);
  const std::string library = "the library '" + session.database->directory() + '\'';
  const std::size_t missing = outcome.counts.count(FileState::missing);
  const std::size_t unreadable = outcome.counts.count(FileState::unreadable);
  if (missing > 0 || (session.arguments.strict && unreadable > 0)) {
    session.output.flush();
    throw Failure(ExitStatus::notThere,
                  library + " lacks, or cannot read, " + counted(missing + unreadable, "file"));
  }
  if (unreadable > 0) {
    session.notices.push_back(
        {library + " has " + counted(unreadable, "file") + " of photos that cannot be read",
         session.database->directory(),
         {}});
  }
}

}  // namespace mrziphoto::tool
