#include <array>
#include <vector>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/Dictionary.h>
#include <MRZiPhoto/platform/KeyValue.h>
#include <MRZiPhoto/platform/NSException.h>
#include <MRZiPhoto/platform/Object.h>
#include <MRZiPhoto/platform/Value.h>

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
    static constexpr std::array kAccessors{
        accessor<&Animal::legs>("legs"),
        Accessor{"name",
                 [](const Object& o) -> Value { return static_cast<const Animal&>(o).name; }},
    };
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
    EXPECT_NE(exception.reason().find("tail"), std::string::npos);
  }
}

}  // namespace
}  // namespace mrziphoto
