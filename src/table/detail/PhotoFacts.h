#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "../../values/Dictionary.h"
#include "Fact.h"
#include "PhotoField.h"
#include "PhotoTable.h"

namespace mrziphoto {

/// What a photo's row answers, whatever the file it was read from. Where two stores may tell the
/// same, the attributes store goes first, and what it holds counts even when it is of a kind that
/// answers nothing.
template <class Facts>
class PhotoAnswers {
 public:
  [[nodiscard]] std::optional<FactText> caption() const {
    return first(PhotoField::caption, PhotoField::infoCaption).text();
  }
  [[nodiscard]] std::optional<FactText> comments() const {
    return first(PhotoField::annotation, PhotoField::infoComment).text();
  }
  [[nodiscard]] std::optional<Date> date() const { return self()[PhotoField::date].date(); }
  [[nodiscard]] std::optional<Date> archiveDate() const {
    return either(PhotoField::archiveDate, PhotoField::infoDate);
  }
  [[nodiscard]] std::optional<Date> modificationDate() const {
    return either(PhotoField::modDate, PhotoField::infoModificationDate);
  }
  /// A key, or nothing for a record that stands for a roll.
  [[nodiscard]] Fact roll() const {
    return self().has(PhotoStore::info) ? Fact() : self()[PhotoField::infoRoll];
  }
  [[nodiscard]] std::optional<std::int64_t> rating() const {
    return self()[PhotoField::infoRating].integer();
  }
  /// Keys, texts of keys, or texts; see `FactKind`.
  [[nodiscard]] Fact keywords() const {
    return first(PhotoField::keywords, PhotoField::infoKeywords);
  }
  /// Paths as they were recorded.
  [[nodiscard]] std::optional<FactText> imagePath() const {
    return self()[PhotoField::imagePath].text();
  }
  [[nodiscard]] std::optional<FactText> originalPath() const {
    return first(PhotoField::imageOriginalPath, PhotoField::originalPath).text();
  }
  [[nodiscard]] std::optional<FactText> thumbnailPath() const {
    return first(PhotoField::imageThumbnailPath, PhotoField::thumbPath).text();
  }

 private:
  [[nodiscard]] const Facts& self() const { return static_cast<const Facts&>(*this); }
  [[nodiscard]] Fact first(PhotoField one, PhotoField other) const {
    const Fact fact = self()[one];
    return fact.isNothing() ? self()[other] : fact;
  }
  [[nodiscard]] std::optional<Date> either(PhotoField date, PhotoField seconds) const {
    if (const std::optional<Date> stored = self()[date].date()) {
      return stored;
    }
    const std::optional<double> number = self()[seconds].number();
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
      if (field < _payloads.size()) {
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
