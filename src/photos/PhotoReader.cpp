#include "detail/PhotoReader.h"

#include "../files/Path.h"
#include "RecordDatabase.h"

namespace mrziphoto {

void PhotoReader::turnTo(const ImageRecRef& photo) {
  _photo = &photo;
  _asked = 0;
  _told = 0;
  _image.isKnown = false;
  _original.isKnown = false;
  if (photo._table) {
    _sheet.emplace((*photo._table)[photo._row]);
  }
}

bool PhotoReader::rowTells(PhotoStore store) {
  const unsigned bit = 1U << static_cast<unsigned>(store);
  if ((_asked & bit) == 0) {
    if (store == PhotoStore::info && !_photo->rowAnswersFor(store)) {
      findFolder();  // in which the store may lie
    }
    _told |= _photo->isToldByRow(store) ? bit : 0;
    _asked |= bit;
  }
  return (_told & bit) != 0;
}

PhotoReader::Text PhotoReader::kept(std::optional<std::string> text) {
  _text = std::move(text);
  return of(_text);
}

PhotoReader::Text PhotoReader::kept(const std::optional<FactText>& text) {
  if (!text || (text->root.empty() && text->folder.empty())) {
    return text ? Text(text->rest) : Text();
  }
  return kept(text->text());
}

std::optional<std::string> PhotoReader::updated(const FactText& recorded) {
  _recorded->assign(recorded.root).append(recorded.folder).append(recorded.rest);
  return _photo->updated(_recorded);
}

Value PhotoReader::rollKey() {
  return rowTells(PhotoStore::info) && rowTells(PhotoStore::imageInfo) ? _sheet->roll().value()
                                                                       : _photo->rollKey();
}

std::optional<Date> PhotoReader::date() {
  return rowTells(PhotoStore::info) ? _sheet->date() : _photo->date();
}

std::optional<Date> PhotoReader::archiveDate() {
  return rowTellsDescriptions() ? _sheet->archiveDate() : _photo->archiveDate();
}

std::optional<Date> PhotoReader::modificationDate() {
  return rowTellsDescriptions() ? _sheet->modificationDate() : _photo->modificationDate();
}

PhotoReader::Text PhotoReader::caption() {
  return rowTellsDescriptions() ? kept(_sheet->caption()) : kept(_photo->caption());
}

PhotoReader::Text PhotoReader::comments() {
  return rowTellsDescriptions() ? kept(_sheet->comments()) : kept(_photo->comments());
}

PhotoReader::Text PhotoReader::originalFilename() {
  return kept(rowTellsDescriptions() ? _sheet->originalFilename() : _photo->originalFilename());
}

PhotoReader::Text PhotoReader::thumbnailPath() {
  const std::optional<FactText> recorded =
      rowTells(PhotoStore::imageInfo) ? _sheet->thumbnailPath() : std::nullopt;
  return kept(recorded ? updated(*recorded) : _photo->thumbnailPath());
}

const std::optional<std::string>& PhotoReader::image() {
  if (!_image.isKnown) {
    const std::optional<FactText> recorded =
        rowTells(PhotoStore::imageInfo) ? _sheet->imagePath() : std::nullopt;
    _image.text = recorded ? updated(*recorded) : _photo->imagePath();
    _image.isKnown = true;
  }
  return _image.text;
}

const std::optional<std::string>& PhotoReader::original() {
  if (!_original.isKnown) {
    _original.text = findOriginal();
    _original.isKnown = true;
  }
  return _original.text;
}

std::optional<std::string> PhotoReader::findOriginal() {
  if (rowTells(PhotoStore::imageInfo)) {
    const Fact recorded = (*_sheet)[PhotoField::imageOriginalPath];
    if (const std::optional<FactText> path = recorded.text()) {
      return path->text();
    }
    if (recorded.isNothing()) {
      findFolder();
      if (_folder && _photo->_directory == _folder) {
        return _photo->originalIn(_originals);
      }
    }
  }
  return _photo->originalImagePath();
}

bool PhotoReader::hasBeenEdited() {
  return _photo->_hasBeenEditedIsValid ? _photo->_hasBeenEdited
                                       : _photo->keepHasBeenEdited(original(), image());
}

/// Gives the photo its folder where it lies beside the one before. The folder follows from the
/// photo's path, and from no more of it than the part before the name unless the archive's path is
/// longer.
void PhotoReader::findFolder() {
  const RecordDatabase* database = _photo->database();
  if (database == nullptr || _photo->_directory || _photo->_updatedImagePath ||
      !rowTells(PhotoStore::imageInfo) || !_sheet->imagePath()) {
    return;
  }
  const std::string_view path = image() ? std::string_view(*image()) : std::string_view();
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos || slash + 1 == path.size()) {
    return;
  }
  const std::string_view around = path.substr(0, slash);
  if (_folder && _database == database && _folderText == around) {
    _photo->_updatedImagePath = true;
    _photo->_directory = _folder;
    return;
  }
  const std::optional<std::string> archive = database->archivePath();
  const bool isWithin = !archive || archive->size() <= slash + 1 || !archive->starts_with(around);
  _database = database;
  _folderText = around;
  _folder = isWithin ? _photo->folder() : nullptr;
  _originals = _folder ? _photo->originalImageDirectory() : std::nullopt;
}

}  // namespace mrziphoto
