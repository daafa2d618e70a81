#include "ArchivedRecord.h"

#include "../archive/NSArchiver.h"
#include "../archive/NSUnarchiver.h"
#include "../values/Log.h"
#include "../values/detail/Formatted.h"

namespace mrziphoto {

std::string ArchivedRecord::description() const {
  return detail::formatted("{}: {}", className(), storedDictionary());
}

void ArchivedRecord::initWithCoder(NSUnarchiver& coder) {
  for (const Class* each = &objectClass(); each != nullptr; each = each->superclass) {
    const std::uint32_t version = coder.versionForClassName(each->name);
    if (version != NSUnarchiver::kNotFound && version > each->highestVersion) {
      logNewerVersion(*each, coder, version);
    }
  }
  _dictionary = coder.decodeObject().dictionary();
}

void ArchivedRecord::encodeWithCoder(NSArchiver& coder) const {
  coder.encodeObject(storedDictionary());
}

void ArchivedRecord::logNewerVersion(const Class& /*olderClass*/, const NSUnarchiver& /*coder*/,
                                     std::uint32_t version) const {
  log("%@ version %u", className(), version);
}

Value ArchivedRecord::entry(std::string_view name) const {
  return _dictionary ? _dictionary->get(name) : Value();
}

void ArchivedRecord::setEntry(std::string_view name, Value value) {
  if (!_dictionary || _dictionary->empty()) {
    _dictionary = make<Dictionary>();  // an empty one may be shared with others
  }
  _dictionary->set(name, std::move(value));
}

}  // namespace mrziphoto
