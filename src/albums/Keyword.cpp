#include "Keyword.h"

#include <array>

#include "../photos/Key.h"
#include "../resources/TVQiPhotoFramework.h"
#include "../values/Log.h"
#include "../values/detail/Description.h"
#include "../values/detail/KeyValue.h"

namespace mrziphoto {
namespace {

const std::string& tickString() {
  static const std::string text =
      TVQiPhotoFramework::bundle()->localizedStringForKey(Keyword::kFavorite, "Keyword");
  return text;
}

}  // namespace

Ref<Keyword> Keyword::initWithDictionary(const Dictionary& dictionary) {
  Ref<Keyword> result = make<Keyword>();
  result->_dictionary = make<Dictionary>(dictionary.entries());
  return result;
}

Ref<Keyword> Keyword::initWithString(const Value& object) {
  if (object.isString()) {
    return initWithDictionary(Dictionary{{kString, object}});
  }
  if (const Ref<Dictionary> dictionary = object.dictionary()) {
    return initWithDictionary(*dictionary);
  }
  log("Don't know how to init %@ from %@'", kClass.name, describeBriefly(object));
  return initWithDictionary(Dictionary());
}

Value Keyword::keyValue() const { return keyNumber(key()); }

std::optional<std::string> Keyword::keyword() const {
  std::optional<std::string> text = string();
  return text == kFavorite ? tickString() : text;
}

const Accessor* Keyword::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&Keyword::key>("key"),
      accessor<&Keyword::keyValue>("keyValue"),
      accessor<&Keyword::keyword>("keyword"),
      accessor<&Keyword::string>("string"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto
