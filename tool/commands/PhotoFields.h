#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <MRZiPhoto/photos/ImageRecRef.h>
#include <MRZiPhoto/photos/detail/PhotoReader.h>
#include <MRZiPhoto/values/detail/KeyValue.h>

#include "../output/RecordWriter.h"

namespace mrziphoto::tool {

/// The fields of a photo that a command answers, in their order.
class PhotoFields {
 public:
  /// What a listing answers when nothing else is asked for; in a table, only what fits a screen.
  static PhotoFields usual(Format format);
  /// Everything that has a place of its own.
  static PhotoFields all();
  /// The fields of these names, each of which key-value access on a photo answers. A name that
  /// stands twice counts once. Throws `Failure` for an unknown name.
  static PhotoFields named(const std::vector<std::string>& names);

  [[nodiscard]] std::vector<std::string> names() const;

  /// Writes one record. A field that cannot be answered is `null`; why, stands in one line on
  /// standard error.
  void write(RecordWriter& out, const ImageRecRef& photo);

  using Write = void (*)(RecordWriter& out, PhotoReader& photo);

 private:
  /// Where the answer to a field comes from: the first of these that is there.
  struct Field {
    std::string name;
    Write write = nullptr;
    const Accessor* ofPhoto = nullptr;
    const Accessor* ofCamera = nullptr;
  };

  void add(std::string_view name, Write direct);

  std::vector<Field> _fields;
  PhotoReader _reader;
};

}  // namespace mrziphoto::tool
