#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "../../files/Path.h"
#include "../../values/Dictionary.h"
#include "Fact.h"
#include "PhotoField.h"
#include "PhotoTable.h"

namespace mrziphoto {

/// Facts and values are asked alike.
inline std::optional<double> numberOf(const Fact& fact) { return fact.number(); }
inline std::optional<double> numberOf(const Value& value) {
  return value.isNumber() ? std::optional(value.doubleValue()) : std::nullopt;
}
/// What stands behind the last slash of a path.
inline std::string lastComponent(const std::string& path) { return path::lastComponent(path); }
std::string lastComponent(const FactText& path);

/// What is stored of a photo, whatever the file it was read from. Where two stores may tell the
/// same, the attributes store goes first, and what it holds counts even when it is of a kind that
/// answers nothing. `Stored` answers a `PhotoField` in brackets with a `Fact` or a `Value`.
template <class Stored>
class PhotoAnswers {
 public:
  [[nodiscard]] auto caption() const {
    return first(PhotoField::caption, PhotoField::infoCaption).text();
  }
  [[nodiscard]] auto comments() const {
    return first(PhotoField::annotation, PhotoField::infoComment).text();
  }
  [[nodiscard]] std::optional<Date> date() const { return self()[PhotoField::date].date(); }
  [[nodiscard]] std::optional<Date> archiveDate() const {
    return either(PhotoField::archiveDate, PhotoField::infoDate);
  }
  [[nodiscard]] std::optional<Date> modificationDate() const {
    return either(PhotoField::modDate, PhotoField::infoModificationDate);
  }
  /// A key, or nothing for a record that stands for a roll. A photo with an info store has its roll
  /// there, and catalogues with info stores tell none.
  [[nodiscard]] auto roll() const {
    return self()[self().has(PhotoStore::info) ? PhotoField::nothing : PhotoField::infoRoll];
  }
  [[nodiscard]] auto rating() const { return self()[PhotoField::infoRating].integer(); }
  /// Keys, texts of keys, or texts; see `FactKind`.
  [[nodiscard]] auto keywords() const {
    return first(PhotoField::keywords, PhotoField::infoKeywords);
  }
  /// Paths as they were recorded.
  [[nodiscard]] auto imagePath() const { return self()[PhotoField::imagePath].text(); }
  [[nodiscard]] auto originalPath() const {
    return first(PhotoField::imageOriginalPath, PhotoField::originalPath).text();
  }
  [[nodiscard]] auto thumbnailPath() const { return thumbnail().text(); }
  [[nodiscard]] auto thumbnail() const {
    return first(PhotoField::imageThumbnailPath, PhotoField::thumbPath);
  }
  [[nodiscard]] std::optional<std::string> originalFilename() const {
    if (const auto name = self()[PhotoField::originalFileName]; !name.isNothing()) {
      const auto text = name.text();
      return text ? std::optional(std::string(*text)) : std::nullopt;
    }
    const auto file = first(PhotoField::originalPath, PhotoField::imagePath).text();
    return file ? std::optional(lastComponent(*file)) : std::nullopt;
  }

 private:
  [[nodiscard]] const Stored& self() const { return static_cast<const Stored&>(*this); }
  [[nodiscard]] auto first(PhotoField one, PhotoField other) const {
    auto stored = self()[one];
    return stored.isNothing() ? self()[other] : stored;
  }
  [[nodiscard]] std::optional<Date> either(PhotoField date, PhotoField seconds) const {
    if (const std::optional<Date> stored = self()[date].date()) {
      return stored;
    }
    const std::optional<double> number = numberOf(self()[seconds]);
    return number ? std::optional(Date{*number}) : std::nullopt;
  }
};

/// One row of a table, which must outlive it.
class PhotoFacts : public PhotoAnswers<PhotoFacts> {
 public:
  PhotoFacts(const PhotoTable& table, std::uint32_t row) : _table(&table), _row(row) {}

  [[nodiscard]] std::uint32_t key() const { return _table->_keys[_row]; }
  [[nodiscard]] const PhotoTable& table() const { return *_table; }
  /// True when the photo has that store, be there anything in it or not.
  [[nodiscard]] bool has(PhotoStore store) const {
    return (static_cast<unsigned char>(*_table->_facts[_row]) >> static_cast<unsigned>(store) &
            1) != 0;
  }
  /// What the row says under that name; found by a walk over its facts.
  [[nodiscard]] Fact operator[](PhotoField field) const;
  /// The dictionary of a store, made anew; nothing when the photo has no such store.
  [[nodiscard]] Ref<Dictionary> dictionary(PhotoStore store) const;

  /// Calls `use` with the number of its field and with each fact, in the order of the file.
  template <class Use>
  void forEach(Use&& use) const {
    const char* at = _table->_facts[_row] + 1;
    while (const auto field = static_cast<std::uint32_t>(facts::readNumber(at))) {
      const auto kind = static_cast<FactKind>(*at++);
      use(field, Fact(*_table, kind, at));
      at = facts::behind(kind, at);
    }
  }

 private:
  const PhotoTable* _table;
  std::uint32_t _row;
};

/// The known facts of a row, laid out once for whoever asks for many of them.
class PhotoSheet : public PhotoAnswers<PhotoSheet> {
 public:
  explicit PhotoSheet(const PhotoFacts& photo) : _photo(photo) {
    photo.forEach([this](std::uint32_t field, const Fact& fact) {
      if (field < _payloads.size() && _kinds[field] == FactKind::nothing) {
        _payloads[field] = fact.payload();
        _kinds[field] = fact.kind();
      }
    });
  }

  [[nodiscard]] std::uint32_t key() const { return _photo.key(); }
  [[nodiscard]] bool has(PhotoStore store) const { return _photo.has(store); }
  [[nodiscard]] Fact operator[](PhotoField field) const {
    return {_photo.table(), _kinds[indexOf(field)], _payloads[indexOf(field)]};
  }

 private:
  PhotoFacts _photo;
  std::array<const char*, kKnownFields> _payloads;  // behind a kind
  std::array<FactKind, kKnownFields> _kinds{};
};

}  // namespace mrziphoto
