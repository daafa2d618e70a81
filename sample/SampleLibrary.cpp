#include "sample/SampleLibrary.h"

#include <bit>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <MRZiPhoto/platform/Path.h>

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
        _progress(options, 1U + (options.images ? 1U : 0U) + (hasCodedPhotos() ? 1U : 0U)) {}

  void write() {
    // First, as the catalogue tells the sizes of the pictures.
    if (_options.images) {
      writePictureFiles(_model, _folder, _photoDone);
      writeSegmentCache(
          _model, path(_version <= kLastArchiveHeaded ? "Thumb64.data" : "Thumb64Segment.data"), 64,
          _options.photos);
    }
    if (_version <= kLastWithAlbumFiles) {
      writeOldestFiles();
    }
    if (_version <= kLastWithDirectories) {
      writeDirectoryTable(_model, _folder, _byteOrder);
    }
    writeAlbumData(_model, _folder, _photoDone);
    writeCatalogue();
  }

 private:
  [[nodiscard]] bool hasCodedPhotos() const { return _version <= kLastCoded; }
  [[nodiscard]] std::string path(const std::string& name) const { return _folder + "/" + name; }

  void writeOldestFiles() {
    writePhotoStores(_model, _folder, _options.images, _byteOrder);
    writeAlbumFiles(_model, _folder, _byteOrder);
    // That this cache is there tells the generation, also when it is empty.
    writeSegmentCache(_model, path("Thumb32.data"), 32, _options.images ? _options.photos : 0);
  }

  // The oldest libraries call their one catalogue file "Library.data", the next "Library.iPhoto".
  // Later ones keep that name for an archive that tells the version, and the coded catalogue has a
  // file of its own.
  void writeCatalogue() {
    const CodedCatalogue catalogue(_model, _folder, _options.images, _byteOrder);
    if (_version <= kLastArchiveHeaded) {
      catalogue.writeArchiveHeaded(
          path(_version <= kLastWithAlbumFiles ? "Library.data" : "Library.iPhoto"), _photoDone);
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

// The folder's absolute path, as a database that opens it will spell it.
std::string prepareFolder(const std::string& given) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path absolute = fs::absolute(given, error);
  if (given.empty() || error) {
    throw std::runtime_error("no library can be written to the folder '" + given + "'");
  }
  std::string folder = path::standardized(absolute.string());
  if (fs::exists(folder, error) && !fs::is_directory(folder, error)) {
    throw std::runtime_error("no library can be written to " + folder + ": it is not a folder");
  }
  makeFolder(folder);
  if (!fs::is_empty(folder, error) || error) {
    throw std::runtime_error("no library can be written to " + folder + ": " +
                             (error ? error.message() : "the folder is not empty"));
  }
  return folder;
}

}  // namespace

void writeSampleLibrary(const SampleOptions& options) {
  checkOptions(options);
  const std::string folder = prepareFolder(options.folder);
  try {
    LibraryWriter(options, folder).write();
  } catch (const std::exception& failure) {
    throw std::runtime_error(std::string(failure.what()) + "; part of a library is left in " +
                             folder);
  }
}

}  // namespace mrziphoto
