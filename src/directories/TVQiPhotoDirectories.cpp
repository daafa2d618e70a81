#include "TVQiPhotoDirectories.h"

#include <array>

#include "../archive/NSUnarchiver.h"
#include "../files/FileManager.h"
#include "../photos/Key.h"
#include "../table/detail/RowIndex.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/KeyValue.h"

namespace mrziphoto {
namespace {

Ref<DirectoryRec> recordOf(const Value& element) { return element.object<DirectoryRec>(); }

void logException(const NSException& exception) {
  log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
}

}  // namespace

const Class TVQiPhotoDirectories::kClass{"TVQiPhotoDirectories"};

/// Positions of the entries by their keys. Holds whole numbers only: nobody asks for others.
class TVQiPhotoDirectories::Index : public RowIndex {
 public:
  explicit Index(const Array& entries)
      : RowIndex(entries.size(), [&entries](std::size_t position) {
          const Ref<DirectoryRec> record = recordOf(entries[position]);
          return wholeNumber(record ? findKeyNumber(record->directoryKey()) : Value());
        }) {}
};

TVQiPhotoDirectories::TVQiPhotoDirectories() = default;
TVQiPhotoDirectories::~TVQiPhotoDirectories() = default;

Ref<TVQiPhotoDirectories> TVQiPhotoDirectories::init() {
  return Ref<TVQiPhotoDirectories>::adopt(new TVQiPhotoDirectories);
}

Ref<TVQiPhotoDirectories> TVQiPhotoDirectories::initWithContentsOfFile(const std::string& path) {
  try {
    const std::optional<Data> bytes = FileManager::contents(path);
    if (!bytes) {
      NSException::raise(kNSInvalidArgumentException,
                         detail::formatted("'{}' cannot be read", path));
    }
    return initWithData(*bytes);
  } catch (const NSException& exception) {
    logException(exception);
    return {};
  }
}

Ref<TVQiPhotoDirectories> TVQiPhotoDirectories::initWithData(const Data& bytes) {
  const auto reader = NSUnarchiver::initForReadingWithData(bytes);
  if (!reader) {
    NSException::raise(kNSInvalidArgumentException, "it is no archive");
  }
  try {
    Ref<TVQiPhotoDirectories> table = init();
    table->directoriesKey = reader->decodeObject();
    table->directories = reader->decodeObject().array();
    return table;
  } catch (const NSException& exception) {
    logException(exception);
    return {};
  }
}

std::optional<std::string> TVQiPhotoDirectories::directoryForKey(const Value& key) const {
  const Value number = findKeyNumber(key);
  if (!directories || number.isNothing()) {
    return std::nullopt;
  }
  const std::optional<std::int64_t> plain = wholeNumber(number);
  if (!plain) {
    return directoryByWalk(key);
  }
  if (!_index) {
    _index = std::make_unique<Index>(*directories);
  }
  const std::optional<std::uint32_t> found = _index->find(*plain);
  return found ? recordOf((*directories)[*found])->directory() : std::nullopt;
}

std::optional<std::string> TVQiPhotoDirectories::directoryByWalk(const Value& key) const {
  const Value number = findKeyNumber(key);
  if (!directories || number.isNothing()) {
    return std::nullopt;
  }
  for (const Value& element : *directories) {
    const Ref<DirectoryRec> record = recordOf(element);
    if (record && findKeyNumber(record->directoryKey()) == number) {
      return record->directory();
    }
  }
  return std::nullopt;
}

std::string TVQiPhotoDirectories::description() const {
  return detail::formatted("{}: directoriesKey = {}, directories = {}", className(), directoriesKey,
                           directories);
}

const Accessor* TVQiPhotoDirectories::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      Accessor{"database",
               [](const Object& o) {
                 return static_cast<const TVQiPhotoDirectories&>(o)._database.value();
               }},
  };
  return findAccessor<kAccessors>(name, Object::accessorNamed(name));
}

}  // namespace mrziphoto
