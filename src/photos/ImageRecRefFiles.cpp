// Where a photo's files lie.

#include <algorithm>

#include "../files/Path.h"
#include "../table/detail/PhotoFacts.h"
#include "../values/Log.h"
#include "ImageRecRef.h"
#include "RecordDatabase.h"
#include "detail/ImageRecRefBeside.h"
#include "detail/PhotoFolder.h"

namespace mrziphoto {

std::optional<std::string> ImageRecRef::updated(const std::optional<std::string>& path) const {
  return path && _database != nullptr ? _database->updateImagePath(*path) : std::nullopt;
}

/// The folder of the recorded image path. A host may have told the database of a library that lies
/// elsewhere; both ways of rewriting paths are applied, each where it fits.
std::optional<std::string> ImageRecRef::directoryFromImageInfo() const {
  std::optional<std::string> image = imageInfo(PhotoField::imagePath).text();
  if (!image) {
    return std::nullopt;
  }
  if (!_updatedImagePath) {
    _updatedImagePath = true;
    image = updated(image);
  }
  if (!image) {
    return std::nullopt;
  }
  const std::optional<std::string> archive =
      _database != nullptr ? _database->archivePath() : std::nullopt;
  if (archive && !archive->empty() && image->starts_with(*archive)) {
    image->replace(0, archive->size(), _database->directory());
  }
  return path::withoutLastComponent(*image);
}

Ref<PhotoFolder> ImageRecRef::folder() const {
  if (_directory) {
    return _directory;
  }
  std::optional<std::string> path;
  if (hasImageInfo()) {
    path = directoryFromImageInfo();
  } else if (_database != nullptr) {
    path = _database->directoryForKey(directoryKey());
  }
  if (path) {
    _directory = _database != nullptr ? _database->photoFolder(*path) : make<PhotoFolder>(*path);
  } else {
    log("%@ - directory '%@' does not exist for %@", kClass.name, path, key());
  }
  return _directory;
}

std::optional<std::string> ImageRecRef::directory() const {
  const Ref<PhotoFolder> found = folder();
  return found ? std::optional(found->path()) : std::nullopt;
}

std::optional<std::string> ImageRecRef::_imageDirectory() const {
  std::optional<std::string> folder = directory();
  return folder && isArchived() ? path::withoutLastComponent(*folder) : folder;
}

std::optional<std::string> ImageRecRef::relativeDirectory() const {
  Beside& kept = beside();
  if (kept._relativeDirectory) {
    return kept._relativeDirectory;
  }
  if (const Value key = directoryKey(); !key.isNothing()) {
    if (_database != nullptr) {
      kept._relativeDirectory = _database->relativeDirectoryForKey(key);
    }
    return kept._relativeDirectory;
  }
  const std::optional<std::string> folder = directory();
  if (!folder) {
    return std::nullopt;
  }
  const std::vector<std::string> mine = path::components(*folder);
  const std::vector<std::string> library =
      path::components(_database != nullptr ? _database->directory() : std::string());
  const auto [behind, unequal] =
      std::mismatch(mine.begin(), mine.end(), library.begin(), library.end());
  kept._relativeDirectory =
      behind == mine.begin() ? *folder : path::fromComponents({behind, mine.end()});
  return kept._relativeDirectory;
}

std::optional<std::string> ImageRecRef::_filename() const {
  const bool rowTells = rowAnswersFor(PhotoStore::info) && !keptInfo();
  const Ref<ImageRec> store = rowTells ? nullptr : info();
  if (std::optional<std::string> name = rowTells ? fact(PhotoField::fileName).value().text()
                                        : store  ? store->fileName()
                                                 : std::nullopt) {
    return name;
  }
  if (hasImageInfo()) {
    const std::optional<std::string> image = imageInfo(PhotoField::imagePath).text();
    return image ? std::optional(path::lastComponent(*image)) : std::nullopt;
  }
  return path::withExtension(keyStringValue(), extension());
}

std::optional<std::string> ImageRecRef::filepath() const {
  const std::optional<std::string> folder = directory();
  return folder ? std::optional(path::join(*folder, _filename().value_or(""))) : std::nullopt;
}

std::optional<std::string> ImageRecRef::imagePath() const {
  if (const Value recorded = imageInfo(PhotoField::imagePath); !recorded.isNothing()) {
    return updated(recorded.text());
  }
  const std::optional<std::string> folder = _imageDirectory();
  return folder ? updated(path::join(*folder, _filename().value_or(""))) : std::nullopt;
}

std::optional<std::string> ImageRecRef::filename() const {
  std::string folder = relativeDirectory().value_or("");
  if (path::lastComponent(folder) == "Data") {
    folder = path::withoutLastComponent(folder);
  }
  const std::optional<std::string> name = _filename();
  return folder.empty() || !name ? name : std::optional(path::join(folder, *name));
}

}  // namespace mrziphoto
