#include <array>

#include "../values/detail/KeyValue.h"
#include "Album.h"
#include "AlbumKinds.h"
#include "Keyword.h"

namespace mrziphoto {

// Name, base, highest version read without a log line, maker.
const Class Keyword::kClass{"Keyword", nullptr, 3, &makeEmpty<Keyword>};
const Class KeywordMgr::kClass{"KeywordMgr", nullptr, 1, &makeEmpty<KeywordMgr>};
const Class KeyMgr::kClass{"KeyMgr", nullptr, 1, &makeEmpty<KeyMgr>};
const Class Filter::kClass{"Filter", nullptr, 1, &makeEmpty<Filter>};
const Class Book::kClass{"Book", nullptr, 3, &makeEmpty<Book>};
const Class Page::kClass{"Page", nullptr, 9, &makeEmpty<Page>};

const Accessor* Filter::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&Filter::arguments>("arguments"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto
