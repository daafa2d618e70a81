#include "sample/SampleLibrary.h"

#include <bit>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include <MRZiPhoto/files/FileFailure.h>
#include <MRZiPhoto/files/Path.h>

#include "sample/AlbumDataWriter.h"
#include "sample/ArchivedFiles.h"
#include "sample/CodedCatalogue.h"
#include "sample/Generations.h"
#include "sample/OutputFile.h"
#include "sample/PhotoStores.h"
#include "sample/PictureFiles.h"
#include "sample/SampleModel.h"

namespace mrziphoto {
namespace {

using namespace sample;
namespace fs = std::filesystem;

// Counts the photos that each pass over the library has done.
class Progress {
 public:
  Progress(const SampleOptions& options, std::uint32_t passes)
      : _report(options.progress), _total(options.photos * passes) {}

  void photoDone() {
    constexpr std::uint32_t kStep = 64;
    ++_done;
    if (_report && (_done % kStep == 0 || _done == _total)) {
      _report(_done, _total);
    }
  }

 private:
  std::function<void(std::uint32_t, std::uint32_t)> _report;
  std::uint32_t _total;
  std::uint32_t _done = 0;
};

class LibraryWriter {
 public:
  LibraryWriter(const SampleOptions& options, std::string folder)
      : _options(options),
        _folder(std::move(folder)),
        _version(options.libraryVersion),
        _byteOrder(options.bigEndianArchives ? std::endian::big : std::endian::little),
        _model(options.seed, _version, options.photos),
        _progress(options, 1U + (options.images ? 2U : 0U) + (hasOldestFiles() ? 1U : 0U) +
                               (hasCodedPhotos() ? 1U : 0U)) {}

  void write() {
    // First, as the catalogue tells the sizes of the pictures.
    if (_options.images) {
      writePictureFiles(_model, _folder, _photoDone);
      writeSegmentCache(
          _model, path(_version <= kLastArchiveHeaded ? "Thumb64.data" : "Thumb64Segment.data"), 64,
          _options.photos, _photoDone);
    }
    if (hasOldestFiles()) {
      writeOldestFiles();
    }
    if (_version <= kLastWithDirectories) {
      writeDirectoryTable(_model, _folder, _byteOrder);
    }
    writeAlbumData(_model, _folder, _photoDone);
    writeCatalogue();
  }

 private:
  [[nodiscard]] bool hasOldestFiles() const { return _version <= kLastWithAlbumFiles; }
  [[nodiscard]] bool hasCodedPhotos() const { return _version <= kLastCoded; }
  [[nodiscard]] std::string path(const std::string& name) const { return _folder + "/" + name; }

  void writeOldestFiles() {
    writePhotoStores(_model, _folder, _options.images, _byteOrder);
    writeAlbumFiles(_model, _folder, _byteOrder);
    // That this cache is there tells the generation, also when it is empty.
    writeSegmentCache(_model, path("Thumb32.data"), 32, _options.images ? _options.photos : 0,
                      _photoDone);
  }

  // The oldest libraries call their one catalogue file "Library.data", the next "Library.iPhoto".
  // Later ones keep that name for an archive that tells the version, and the coded catalogue has a
  // file of its own.
  void writeCatalogue() {
    const CodedCatalogue catalogue(_model, _folder, _options.images, _byteOrder);
    if (_version <= kLastArchiveHeaded) {
      catalogue.writeArchiveHeaded(path(hasOldestFiles() ? "Library.data" : "Library.iPhoto"),
                                   _photoDone);
      return;
    }
    writeFile(path("Library.iPhoto"), archiveOfVersion(_version, _byteOrder));
    if (_version <= kLastCoded) {
      catalogue.write(path("Library6.iPhoto"), _photoDone);
    } else {
      CodedCatalogue::writeVersion(path("Library6.iPhoto"), _version);
    }
  }

  const SampleOptions& _options;
  std::string _folder;
  std::int32_t _version;
  std::endian _byteOrder;
  SampleModel _model;
  Progress _progress;
  std::function<void()> _photoDone = [this] { _progress.photoDone(); };
};

void checkOptions(const SampleOptions& options) {
  if (options.libraryVersion < kOldestSampleVersion ||
      options.libraryVersion > kNewestSampleVersion) {
    throw std::runtime_error("a library of version " + std::to_string(options.libraryVersion) +
                             " cannot be written: versions go from " +
                             std::to_string(kOldestSampleVersion) + " to " +
                             std::to_string(kNewestSampleVersion));
  }
  if (options.photos > kMostSamplePhotos) {
    throw std::runtime_error("a library of " + std::to_string(options.photos) +
                             " photos cannot be written: " + std::to_string(kMostSamplePhotos) +
                             " are the most");
  }
}

/// The folder that is written to. Unless it is kept, all that was made goes again.
class NewFolder {
 public:
  explicit NewFolder(const std::string& given) : NewFolder() {
    std::error_code error;
    const fs::path absolute = fs::absolute(given, error);
    if (given.empty() || error) {
      throw std::runtime_error("no library can be written to the folder '" + given + "'");
    }
    _path = path::standardized(absolute.string());
    if (fs::exists(_path, error) && !fs::is_directory(_path, error)) {
      throw std::runtime_error("no library can be written to " + _path + ": it is not a folder");
    }
    // A dangling link exists, too, and was not made here.
    for (fs::path folder = _path; !fs::exists(fs::symlink_status(folder, error));
         folder = folder.parent_path()) {
      _made.push_back(folder);
    }
    _isKept = _made.empty();
    makeFolder(_path);
    if (!fs::is_empty(_path, error) || error) {
      throw std::runtime_error(
          "no library can be written to " + _path + ": " +
          (error ? FileFailure::ofSystem(_path, error.value()).reason : "the folder is not empty"));
    }
    _isKept = false;
  }
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;
  ~NewFolder() {
    if (_isKept) {
      return;
    }
    std::error_code ignored;
    for (fs::directory_iterator entry(_path, ignored); entry != fs::directory_iterator();
         entry.increment(ignored)) {
      fs::remove_all(entry->path(), ignored);
    }
    for (const fs::path& folder : _made) {
      fs::remove(folder, ignored);
    }
  }

  void keep() { _isKept = true; }
  /// Its absolute path, as a database that opens it will spell it.
  [[nodiscard]] const std::string& path() const { return _path; }

 private:
  // What is made before the other constructor fails goes, too.
  NewFolder() = default;

  std::string _path;
  std::vector<fs::path> _made;  // from the inside out
  bool _isKept = true;
};

}  // namespace

void writeSampleLibrary(const SampleOptions& options) {
  checkOptions(options);
  NewFolder folder(options.folder);
  LibraryWriter(options, folder.path()).write();
  folder.keep();
}

}  // namespace mrziphoto
