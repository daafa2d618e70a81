#include <array>

#include "../values/detail/KeyValue.h"
#include "ImageRec.h"

namespace mrziphoto {

Ref<AttributeMgr> AttributeMgr::init() { return initWithDictionary(make<Dictionary>()); }

Ref<AttributeMgr> AttributeMgr::initWithDictionary(Ref<Dictionary> dictionary) {
  Ref<AttributeMgr> result = make<AttributeMgr>();
  result->_dictionary = std::move(dictionary);
  return result;
}

void AttributeMgr::setAttributeForKey(const Value& attribute, std::string_view name) {
  if (const Ref<Dictionary> found = attributes(); !found || found->empty()) {
    setAttributes(make<Dictionary>());  // an empty one may be shared with others
  }
  if (!attribute.isNothing()) {
    attributes()->set(name, attribute);
  }
}

Value AttributeMgr::attributeForKey(std::string_view name) const {
  const Ref<Dictionary> found = attributes();
  return found ? found->get(name) : Value();
}

std::optional<Date> AttributeMgr::modificationDate() const {
  const std::optional<Date> date = entry(kModificationDate).date();
  return date ? date : entry(kModicationDate).date();
}

const Accessor* AttributeMgr::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&AttributeMgr::attributes>("attributes"),
      accessor<&AttributeMgr::imageUserData>("imageUserData"),
      accessor<&AttributeMgr::modificationDate>("modificationDate"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto
