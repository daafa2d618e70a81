#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/KeyedHash.h>
#include <MRZiPhoto/values/detail/KeyValue.h>

#include "support/Testing.h"

namespace mrziphoto {
namespace {

int living = 0;

class Animal : public Object {
 public:
  static constexpr Class kClass{"Animal", nullptr, 1};
  Animal() { ++living; }
  ~Animal() override { --living; }
  const Class& objectClass() const override { return kClass; }
  const Accessor* accessorNamed(std::string_view key) const override {
    static constexpr std::array kAccessors{accessor<&Animal::legs>("legs"),
                                           Accessor{"name", [](const Object& o) -> Value {
                                                      return static_cast<const Animal&>(o).name;
                                                    }}};
    return findAccessor<kAccessors>(key, Object::accessorNamed(key));
  }
  [[nodiscard]] int legs() const { return 4; }
  std::string name = "Rex";
  Value friendOfMine;
};

class Dog final : public Animal {
 public:
  static constexpr Class kClass{"Dog", &Animal::kClass, 2};
  const Class& objectClass() const override { return kClass; }
};

TEST(Ref, ConvertsAndCountsLikeAPointer) {
  {
    Ref<Dog> dog = make<Dog>();
    Ref<Animal> animal = dog;
    const Ref<Object> object = std::move(dog);
    EXPECT_FALSE(dog);  // NOLINT(bugprone-use-after-move): a moved-from reference is nothing
    EXPECT_TRUE(object.as<Dog>());
    EXPECT_FALSE(object.as<Dictionary>());
    EXPECT_EQ(object.get(), animal.get());
    animal = Ref<Animal>(animal.get());
    EXPECT_EQ(living, 1);
    EXPECT_TRUE(object->isKindOf(Animal::kClass) && object->isKindOf(Dog::kClass));
    EXPECT_FALSE(make<Animal>()->isKindOf(Dog::kClass));
    EXPECT_EQ(object->description(), "<Dog>");
    const Value value = animal;
    animal = nullptr;
    EXPECT_TRUE(value.object<Animal>());
    EXPECT_EQ(living, 1);
  }
  EXPECT_EQ(living, 0);
}

TEST(WeakLink, BecomesNothingWithItsObject) {
  Ref<Animal> animal = make<Animal>();
  const Value weak = Value::weak(*animal);
  const Value second = Value::weak(*animal);
  const std::vector<Value> copies{weak, second};
  EXPECT_TRUE(weak == Value(animal) && weak == second);
  EXPECT_EQ(weak.object<Animal>()->name, "Rex");
  EXPECT_EQ(living, 1);
  animal = nullptr;
  EXPECT_EQ(living, 0);
  EXPECT_TRUE(weak.isNothing() && copies[1].isNothing() && !weak.object());
  EXPECT_EQ(weak, Value());
  EXPECT_EQ(weak.hash(), Value().hash());
  EXPECT_EQ(weak.description(), "(null)");
  EXPECT_EQ(weak.className(), "<nil>");
}

TEST(WeakLink, LinksThatGoFirstLeaveTheObjectAlone) {
  const Ref<Animal> animal = make<Animal>();
  { const Value weak = Value::weak(*animal); }
  const Value again = Value::weak(*animal);
  EXPECT_TRUE(again.object());
  const Ref<Animal> itself = make<Animal>();
  itself->friendOfMine = Value::weak(*itself);  // goes while its object goes
}

TEST(KeyValue, CallsNamedOperations) {
  const Ref<Animal> animal = make<Animal>();
  EXPECT_EQ(animal->valueForKey("legs"), 4);
  EXPECT_EQ(animal->valueForKey("name"), "Rex");
  try {
    static_cast<void>(animal->valueForKey("tail"));
    FAIL() << "an unknown key must be refused";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), "NSUnknownKeyException");
    EXPECT_PRED2(contains, exception.reason(), "tail");
  }
}

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

Texts keysOf(const Dictionary& dictionary) {
  Texts keys;
  for (const Dictionary::Entry& entry : dictionary) {
    keys.emplace_back(entry.key.text());
  }
  return keys;
}

/// Compares with a plain walk at every size, below and above the one from which an index is used.
TEST(Dictionary, FindsWhatAWalkFinds) {
  std::mt19937 random(7);  // NOLINT(bugprone-random-generator-seed): the same on every run
  Dictionary dictionary;
  std::map<std::string, int> expected;
  Texts order;
  for (int i = 0; i < 3000; ++i) {
    const std::string key = std::to_string(random() % 2000);
    if (expected.insert_or_assign(key, i).second) {
      order.push_back(key);
    }
    dictionary.set(key, i);
    const std::string other = std::to_string(random() % 2000);
    const auto found = expected.find(other);
    ASSERT_EQ(dictionary.get(other), found == expected.end() ? Value() : Value(found->second));
  }
  EXPECT_EQ(keysOf(dictionary), order);
  EXPECT_FALSE(dictionary.contains(""));
}

TEST(Dictionary, OfEqualKeysTheLaterValueStandsInTheEarlierPlace) {
  for (const int count : {2, 30, 300}) {
    std::vector<Dictionary::Entry> entries;
    entries.reserve(static_cast<std::size_t>(count) + 1);
    for (int i = 0; i < count; ++i) {
      entries.push_back({DictionaryKey(std::to_string(i)), i});
    }
    entries.push_back({DictionaryKey("0"), "later"});
    const Dictionary dictionary(std::move(entries));
    EXPECT_EQ(dictionary.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(dictionary.begin()->key.text(), "0");
    EXPECT_EQ(dictionary.get("0"), "later");
    EXPECT_EQ(dictionary.get(std::to_string(count - 1)), count - 1);
  }
}

TEST(Dictionary, TakesManyRepeatsOfOneKey) {
  constexpr int kRepeats = 300'000;
  std::vector<Dictionary::Entry> entries;
  entries.reserve(kRepeats);
  for (int i = 0; i < kRepeats; ++i) {
    entries.push_back({DictionaryKey("a"), i});
  }
  const Dictionary dictionary(std::move(entries));
  EXPECT_EQ(keysOf(dictionary), Texts{"a"});
  EXPECT_EQ(dictionary.get("a"), 299'999);
}

/// The answers that the authors of the hash gave.
TEST(KeyedHash, IsSipHash) {
  constexpr std::array<std::uint64_t, 2> kKey{0x0706050403020100, 0x0F0E0D0C0B0A0908};
  std::string bytes;
  for (char next = 0; next < 15; ++next) {
    bytes += next;
  }
  EXPECT_EQ(sipHash(kKey, ""), 0x726FDB47DD0E0E31);
  EXPECT_EQ(sipHash(kKey, bytes.substr(0, 8)), 0x93F5F5799A932462);
  EXPECT_EQ(sipHash(kKey, bytes), 0xA129CA6149BE45E5);
  EXPECT_EQ(KeyedHash{}("one"), KeyedHash{}(std::string("one")));
  EXPECT_NE(KeyedHash{}("one"), KeyedHash{}("two"));
}

TEST(Dictionary, EqualityIgnoresOrder) {
  const Dictionary one{{"a", 1}, {"b", "two"}};
  const Dictionary two{{"b", "two"}, {"a", 1.0}};
  EXPECT_TRUE(one.isEqual(two));
  EXPECT_EQ(one.hash(), two.hash());
  EXPECT_FALSE(one.isEqual(Dictionary{{"a", 1}}));
  EXPECT_FALSE(one.isEqual(Dictionary{{"a", 1}, {"b", nullptr}}));
  EXPECT_FALSE(one.isEqual(Dictionary{{"a", 1}, {"c", "two"}}));
}

TEST(Dictionary, HoldsEmptyAndUnusualKeys) {
  Dictionary dictionary;
  const std::string zero("a\0b", 3);
  dictionary.set("", 1);
  dictionary.set(zero, 2);
  dictionary.set("a", nullptr);
  EXPECT_EQ(dictionary.get(""), 1);
  EXPECT_EQ(dictionary.get(zero), 2);
  EXPECT_TRUE(dictionary.contains("a")) << "an entry of nothing is an entry";
}

}  // namespace
}  // namespace mrziphoto
