#include "ImageRec.h"

#include <array>

#include "../values/detail/KeyValue.h"

namespace mrziphoto {

Ref<ImageRec> ImageRec::init() { return initWithDictionary(make<Dictionary>()); }

Ref<ImageRec> ImageRec::initWithDictionary(Ref<Dictionary> dictionary) {
  Ref<ImageRec> result = make<ImageRec>();
  result->_dictionary = std::move(dictionary);
  return result;
}

void ImageRec::setIfPresent(std::string_view name, const Value& value) {
  if (!value.isNothing()) {
    setEntry(name, value);
  }
}

Value ImageRec::numberOrZero(std::string_view name) const {
  Value value = entry(name);
  return value.isNothing() ? Value(0.0F) : value;
}

std::optional<std::string> ImageRec::fileName() const {
  const Ref<ImageSource> source = imageSource();
  return source ? source->filename() : entry(kFileName).text();
}

Ref<ImageSource> ImageRec::imageSource() const { return entry(kImageSource).object<ImageSource>(); }

Value ImageRec::directoryKey() const {
  const Ref<ImageSource> source = imageSource();
  return source ? source->directoryKey() : Value();
}

const Accessor* ImageRec::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&ImageRec::date>("date"),
      accessor<&ImageRec::directoryKey>("directoryKey"),
      accessor<&ImageRec::fileName>("fileName"),
      accessor<&ImageRec::imageHeight>("imageHeight"),
      accessor<&ImageRec::imageSource>("imageSource"),
      accessor<&ImageRec::imageWidth>("imageWidth"),
      accessor<&ImageRec::key>("key"),
      accessor<&ImageRec::rollKey>("rollKey"),
      accessor<&ImageRec::rotation>("rotation"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto
