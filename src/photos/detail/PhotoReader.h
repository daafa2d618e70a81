#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "../../table/detail/PhotoFacts.h"
#include "../ImageRecRef.h"
#include "PhotoFolder.h"

namespace mrziphoto {

/// Answers what listings ask of photos, one photo after the other: straight from a photo's row
/// where that tells, without an object or a text that is made for it; else as `ImageRecRef` does.
/// Each operation answers as that of the same name there. Texts last until the next question.
class PhotoReader {
 public:
  using Text = std::optional<std::string_view>;

  /// The photo must outlive what is asked of it.
  void turnTo(const ImageRecRef& photo);
  [[nodiscard]] const ImageRecRef& photo() const { return *_photo; }

  [[nodiscard]] Value rollKey();
  [[nodiscard]] std::optional<Date> date();
  [[nodiscard]] std::optional<Date> archiveDate();
  [[nodiscard]] std::optional<Date> modificationDate();
  [[nodiscard]] Text caption();
  [[nodiscard]] Text comments();
  [[nodiscard]] Text imagePath() { return of(image()); }
  [[nodiscard]] Text originalImagePath() { return of(original()); }
  [[nodiscard]] Text thumbnailPath();
  [[nodiscard]] Text originalFilename();
  [[nodiscard]] bool hasBeenEdited();
  /// Calls `use` with each member of `keywords`.
  template <class Use>
  void forEachKeyword(Use&& use);

 private:
  /// A text that a photo was asked for.
  struct Kept {
    bool isKnown = false;
    std::optional<std::string> text;
  };

  static Text of(const std::optional<std::string>& text) { return text ? Text(*text) : Text(); }
  [[nodiscard]] bool rowTells(PhotoStore store);
  [[nodiscard]] bool rowTellsDescriptions() {
    return rowTells(PhotoStore::attributes) && rowTells(PhotoStore::imageInfo);
  }
  Text kept(std::optional<std::string> text);
  Text kept(const std::optional<FactText>& text);
  /// The path of a fact, where the library lies now.
  std::optional<std::string> updated(const FactText& recorded);
  const std::optional<std::string>& image();
  const std::optional<std::string>& original();
  [[nodiscard]] std::optional<std::string> findOriginal();
  void findFolder();

  const ImageRecRef* _photo = nullptr;
  std::optional<PhotoSheet> _sheet;
  // A bit for each store that was asked after, and for each that the row tells of.
  unsigned _asked = 0;
  unsigned _told = 0;
  Kept _image;
  Kept _original;
  std::optional<std::string> _recorded{std::in_place};
  std::optional<std::string> _text;
  // The folder of the last photos: of its database, at that path, without its last slash.
  const RecordDatabase* _database = nullptr;
  std::string _folderText;
  Ref<PhotoFolder> _folder;
  std::optional<std::string> _originals;
};

template <class Use>
void PhotoReader::forEachKeyword(Use&& use) {
  if (rowTellsDescriptions()) {
    const Fact listed = (*_sheet)[PhotoField::keywords];
    const Fact keys = (*_sheet)[PhotoField::infoKeywords];
    if (listed.kind() == FactKind::objects) {
      listed.forEachObjectNumber(
          [&](std::uint32_t number) { use(Value(listed.table().object(number))); });
      return;
    }
    if (listed.isNothing() && (keys.isNothing() || keys.kind() == FactKind::keyNumbers)) {
      keys.forEachKeyNumber([&](std::uint32_t key) {
        // As a text, a larger key stands for the largest number.
        constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
        if (Value keyword = _photo->keywordForKey(std::min(key, kLargest)); !keyword.isNothing()) {
          use(keyword);
        }
      });
      return;
    }
  }
  if (const Ref<Array> keywords = _photo->keywords().array()) {
    for (const Value& keyword : *keywords) {
      use(keyword);
    }
  }
}

}  // namespace mrziphoto
