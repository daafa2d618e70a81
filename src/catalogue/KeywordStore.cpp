#include "detail/KeywordStore.h"

#include "../values/Array.h"
#include "../values/NSException.h"

namespace mrziphoto {

TVQiPhotoLibrary::KeywordStore::KeywordStore(const Value& stored) {
  const Ref<Array> list = stored.array();
  if (!list) {
    _stored = stored;
    return;
  }
  _list = OwnedList<Keyword>::makeEmpty();
  for (const Value& element : *list) {
    add(element.object<Keyword>());
  }
}

TVQiPhotoLibrary::KeywordStore TVQiPhotoLibrary::KeywordStore::emptyList() {
  KeywordStore store;
  store._list = OwnedList<Keyword>::makeEmpty();
  return store;
}

List<Keyword> TVQiPhotoLibrary::KeywordStore::keywords() const {
  const Ref<KeywordMgr> manager = this->manager();
  return manager ? manager->keywords() : _list;
}

void TVQiPhotoLibrary::KeywordStore::add(Ref<Keyword> keyword) {
  if (!_list.isNothing()) {
    _list.append(std::move(keyword));
  }
}

Ref<Keyword> TVQiPhotoLibrary::KeywordStore::find(std::int64_t number) {
  const auto items = keywords().items();
  // The list may have grown since the last question.
  for (; _indexed < items->size(); ++_indexed) {
    index(*(*items)[_indexed], _indexed);
  }
  const auto position = _byNumber.find(number);
  return position ? (*items)[*position] : Ref<Keyword>();
}

void TVQiPhotoLibrary::KeywordStore::index(const Keyword& keyword, std::size_t position) {
  try {
    if (const auto number = wholeNumber(keyword.keyValue())) {
      _byNumber.add(*number, static_cast<std::uint32_t>(position));
    }
  } catch (const NSException&) {
    return;
  }
}

}  // namespace mrziphoto
