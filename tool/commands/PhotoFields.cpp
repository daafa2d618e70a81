#include "PhotoFields.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <optional>

#include <MRZiPhoto/exif/TVQiPhotoUserData.h>
#include <MRZiPhoto/photos/ImageRec.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/NSException.h>

#include "../output/Failure.h"
#include "../output/Messages.h"
#include "../output/Values.h"
#include "../output/Wording.h"

namespace mrziphoto::tool {
namespace {

void writeKeywords(RecordWriter& out, PhotoReader& photo) {
  out.beginList();
  photo.forEachKeyword([&out](const Value& keyword) {
    if (const std::optional<std::string> text = keywordText(keyword)) {
      out.text(*text);
    }
  });
  out.endList();
}

void writePhotoKey(RecordWriter& out, PhotoReader& reader) {
  const ImageRecRef& photo = reader.photo();
  if (const std::optional<std::int64_t> number = photo.plainKeyNumber()) {
    out.integer(*number);
  } else {
    writeKey(out, photo.key());
  }
}

/// A field that writes the answer of one operation, which is a text, a date or a boolean.
template <auto operation>
void answer(RecordWriter& out, PhotoReader& photo) {
  const auto value = (photo.*operation)();
  if constexpr (std::is_same_v<decltype(value), const bool>) {
    out.boolean(value);
  } else if constexpr (std::is_same_v<decltype(value), const std::optional<Date>>) {
    out.date(value);
  } else if (value) {
    out.text(*value);
  } else {
    out.null();
  }
}

/// In which of the two sets of fields a field stands by itself.
enum class Usual { no, yes, alsoInTables };

struct ListedField {
  std::string_view name;
  Usual usual = Usual::no;
  /// The straight way to the answer; nullptr for fields that key-value access answers.
  PhotoFields::Write write = nullptr;
};

// In the order of `--fields all`. Those of a listing go the straight way: a library may have a
// million photos.
constexpr std::array kListedFields{
    ListedField{"key", Usual::alsoInTables, writePhotoKey},
    ListedField{"rollKey", Usual::yes,
                [](RecordWriter& out, PhotoReader& photo) { writeKey(out, photo.rollKey()); }},
    ListedField{"date", Usual::yes, answer<&PhotoReader::date>},
    ListedField{"archiveDate", Usual::alsoInTables, answer<&PhotoReader::archiveDate>},
    ListedField{"modificationDate", Usual::yes, answer<&PhotoReader::modificationDate>},
    ListedField{"caption", Usual::alsoInTables, answer<&PhotoReader::caption>},
    ListedField{"comments", Usual::yes, answer<&PhotoReader::comments>},
    ListedField{"keywords", Usual::alsoInTables, writeKeywords},
    ListedField{"imagePath", Usual::alsoInTables, answer<&PhotoReader::imagePath>},
    ListedField{"originalImagePath", Usual::yes, answer<&PhotoReader::originalImagePath>},
    ListedField{"thumbnailPath", Usual::yes, answer<&PhotoReader::thumbnailPath>},
    ListedField{"originalFilename", Usual::yes, answer<&PhotoReader::originalFilename>},
    ListedField{"hasBeenEdited", Usual::yes, answer<&PhotoReader::hasBeenEdited>},
    ListedField{"directory"},
    ListedField{"relativeDirectory"},
    ListedField{"filename"},
    ListedField{"extension"},
    ListedField{"originalExtension"},
    ListedField{"fileSize"},
    ListedField{"rotation"},
    ListedField{"imageWidth"},
    ListedField{"imageHeight"},
    ListedField{"maker"},
    ListedField{"model"},
    ListedField{"software"},
    ListedField{"aperture"},
    ListedField{"maximumAperture"},
    ListedField{"exposure"},
    ListedField{"exposureBias"},
    ListedField{"shutter"},
    ListedField{"subjectDistance"},
    ListedField{"isoSpeed"},
    ListedField{"focalLength"},
    ListedField{"brightness"},
    ListedField{"sensingMethod"},
    ListedField{"lightSource"},
    ListedField{"flash"},
    ListedField{"meteringMode"},
    ListedField{"sensingMethodDescription"},
    ListedField{"lightSourceDescription"},
    ListedField{"flashDescription"},
    ListedField{"meteringModeDescription"},
};

/// A photo without a library, which tells what names a photo answers.
const ImageRecRef& anyPhoto() {
  static const Ref<ImageRecRef> photo = [] {
    Ref<ImageRecRef> made = ImageRecRef::init();
    // With a store of its own it looks for none beside a picture file.
    made->setImageAttributes(AttributeMgr::init());
    return made;
  }();
  return *photo;
}

void complain(const ImageRecRef& photo, const std::string& what, const NSException& exception) {
  const Value number = numberOfKey(photo.key());
  const std::string which =
      number.isNothing() ? "a photo without a key" : "photo " + number.description();
  Messages::complain("what cannot be read",
                     fmt::format("{}: {} cannot be read: {}", which, what, exception.reason()));
}

/// The camera values of one photo, asked for once.
class Camera {
 public:
  explicit Camera(const ImageRecRef& photo) : _photo(photo) {}

  /// Nothing when the photo's camera block cannot be read, which the first call complains about.
  [[nodiscard]] const Ref<TVQiPhotoUserData>& data() {
    if (!_isAsked) {
      _isAsked = true;
      try {
        _data = _photo.exifData();
      } catch (const NSException& exception) {
        complain(_photo, "the camera block", exception);
      }
    }
    return _data;
  }

 private:
  const ImageRecRef& _photo;
  Ref<TVQiPhotoUserData> _data;
  bool _isAsked = false;
};

}  // namespace

PhotoFields PhotoFields::usual(Format format) {
  PhotoFields fields;
  for (const ListedField& field : kListedFields) {
    if (field.usual == Usual::alsoInTables ||
        (field.usual == Usual::yes && format != Format::table)) {
      fields.add(field.name, field.write);
    }
  }
  return fields;
}

PhotoFields PhotoFields::all() {
  PhotoFields fields;
  for (const ListedField& field : kListedFields) {
    fields.add(field.name, field.write);
  }
  return fields;
}

PhotoFields PhotoFields::named(const std::vector<std::string>& names) {
  PhotoFields fields;
  for (const std::string& name : names) {
    const auto* known = std::ranges::find(kListedFields, name, &ListedField::name);
    fields.add(name, known != kListedFields.end() ? known->write : nullptr);
  }
  return fields;
}

void PhotoFields::add(std::string_view name, Write direct) {
  if (std::ranges::find(_fields, name, &Field::name) != _fields.end()) {
    return;
  }
  const ImageRecRef& photo = anyPhoto();
  Field field{std::string(name), direct, photo.accessorNamed(name),
              photo.exifData()->accessorNamed(name)};
  if (direct == nullptr && field.ofPhoto == nullptr && field.ofCamera == nullptr) {
    std::array<std::string_view, kListedFields.size()> names;
    std::ranges::transform(kListedFields, names.begin(), &ListedField::name);
    throw Failure(ExitStatus::wrongUse,
                  "a photo has no field '" + field.name + '\'' + didYouMean(field.name, names, ""));
  }
  _fields.push_back(std::move(field));
}

std::vector<std::string> PhotoFields::names() const {
  std::vector<std::string> names;
  for (const Field& field : _fields) {
    names.push_back(field.name);
  }
  return names;
}

void PhotoFields::write(RecordWriter& out, const ImageRecRef& photo) {
  _reader.turnTo(photo);
  Camera camera(photo);
  out.beginRecord();
  for (const Field& field : _fields) {
    try {
      if (field.write != nullptr) {
        field.write(out, _reader);
      } else if (field.ofPhoto != nullptr) {
        writeValue(out, field.ofPhoto->get(photo));
      } else if (const Ref<TVQiPhotoUserData>& data = camera.data()) {
        writeValue(out, field.ofCamera->get(*data));
      } else {
        out.null();
      }
    } catch (const NSException& exception) {
      complain(photo, '\'' + field.name + '\'', exception);
      out.null();
    }
  }
  out.endRecord();
}

}  // namespace mrziphoto::tool
