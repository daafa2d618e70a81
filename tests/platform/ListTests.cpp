#include <gtest/gtest.h>

#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/platform/List.h>

namespace mrziphoto {
namespace {

template <class Keys>
concept CanBeChanged = requires(Keys keys) {
  keys.clear();
};
static_assert(CanBeChanged<OwnedList<Key>> && !CanBeChanged<List<Key>>);
static_assert(!std::is_copy_constructible_v<OwnedList<Key>>, "a list has one owner");

std::string textOf(const List<Key>& keys) {
  std::string text;
  for (const Ref<Key>& key : keys) {
    text += key->stringValue();
  }
  return text;
}

TEST(List, ShowsWhatItsOwnerDoesAndHoldsNothingAbsent) {
  const List<Key> nothing;
  EXPECT_TRUE(nothing.isNothing() && nothing.empty() && nothing.items()->empty());
  EXPECT_EQ(textOf(nothing), "");
  EXPECT_FALSE(List<Key>::makeEmpty().isNothing());
  EXPECT_EQ(textOf(List<Key>({Key::initWithKey(1), nullptr, Key::initWithKey(2)})), "12");

  OwnedList<Key> owned;
  owned.append(Key::initWithKey(1));
  const List<Key> view = owned;
  owned.append(nullptr);
  owned.append(Key::initWithKey(2));
  owned.insert(Key::initWithKey(0), 0);
  EXPECT_EQ(textOf(view), "012");
  EXPECT_TRUE(view.isSameList(owned));
  owned.clear();
  EXPECT_TRUE(view.empty());
  EXPECT_FALSE(view.isNothing());
}

TEST(List, AWalkOutlivesEveryChange) {
  OwnedList<Key> owned({Key::initWithKey(1), Key::initWithKey(2)});
  std::string walked;
  for (const Ref<Key>& key : owned) {
    for (std::uint32_t i = 0; i < 100; ++i) {
      owned.append(Key::initWithKey(3));
    }
    owned.clear();
    walked += key->stringValue();
  }
  EXPECT_EQ(walked, "12");
  EXPECT_TRUE(owned.empty());
}

}  // namespace
}  // namespace mrziphoto
