#pragma once

#include <MRZiPhoto/albumdata/detail/AlbumData.h>
#include <MRZiPhoto/propertylist/PropertyList.h>
#include <MRZiPhoto/table/detail/PhotoFacts.h>

#include "Testing.h"

namespace mrziphoto {

/// A value with the types of its numbers and the order of its entries. Dates that no property list
/// could be written with come as descriptions.
inline std::string textOfValue(const Value& value) {
  PropertyListWriter writer;
  try {
    if (!value.isNothing()) {
      writer.value(value);
    }
  } catch (const NSException&) {
    return value.description();
  }
  return writer.text();
}

/// What a table of album data says, as text.
inline std::string textOfAlbumData(const AlbumData& data) {
  std::string text;
  for (const Fact& entry : {data.archivePath, data.albums, data.rolls, data.keywords}) {
    text += "entry " + textOfValue(entry.value());
  }
  for (std::uint32_t row = 0; row < data.photos->size(); ++row) {
    const PhotoFacts photo = (*data.photos)[row];
    const Ref<Dictionary> info = photo.dictionary(PhotoStore::imageInfo);
    text += "photo " + std::to_string(photo.key()) + " " + textOfValue(info);
  }
  return text;
}

/// The same text, straight from a property list.
inline std::string textOfAlbumData(const Value& propertyList) {
  const Ref<Dictionary> top = propertyList.dictionary();
  const auto entry = [&top](std::string_view name) { return top ? top->get(name) : Value(); };
  std::string text;
  for (const char* name : {"Archive Path", "List of Albums", "List of Rolls", "List of Keywords"}) {
    text += "entry " + textOfValue(entry(name));
  }
  if (const Ref<Dictionary> photos = entry("Master Image List").dictionary()) {
    for (const Dictionary::Entry& photo : *photos) {
      text += "photo " + std::to_string(Value(photo.key.text()).unsignedIntValue()) + " " +
              textOfValue(photo.value.dictionary());
    }
  }
  return text;
}

}  // namespace mrziphoto
