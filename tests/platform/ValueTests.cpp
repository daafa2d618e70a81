#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/Array.h>
#include <MRZiPhoto/platform/Dictionary.h>
#include <MRZiPhoto/platform/Value.h>

namespace mrziphoto {
namespace {

constexpr std::int64_t kMostNegative = std::numeric_limits<std::int64_t>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::uint32_t bits(std::int32_t value) { return static_cast<std::uint32_t>(value); }

TEST(Value, ReadsNumbersFromAllKinds) {
  struct Case {
    Value value;
    std::int32_t signedInt;
    std::uint32_t unsignedInt;
    double real;
  };
  const std::vector<Case> cases{
      {42, 42, 42, 42},
      {-5, -5, bits(-5), -5},
      {std::int64_t{0x1'0000'0007}, 7, 7, 4294967303.0},
      {std::uint64_t{0xFFFF'FFFF'FFFF'FFFF}, -1, 0xFFFF'FFFF, 18446744073709551615.0},
      {3.9, 3, 3, 3.9},
      {-0.5, 0, 0, -0.5},
      {1e20, 2147483647, 0xFFFF'FFFF, 1e20},
      {std::numeric_limits<double>::quiet_NaN(), 0, 0, 0},
      {Decimal{28, -1}, 2, 2, 2.8},
      {"42 photos", 42, 42, 42},
      {" \t+17", 17, 17, 17},
      {"-3", -3, 0, -3},
      {"+-3", 0, 0, 0},
      {"99999999999999999999", 2147483647, 0xFFFF'FFFF, 1e20},
      {"4294967295", 2147483647, 0xFFFF'FFFF, 4294967295.0},
      {".5e1x", 0, 0, 5},
      {"nan", 0, 0, 0},
      {"Infinity", 0, 0, 0},
      {"", 0, 0, 0},
      {nullptr, 0, 0, 0},
      {make<Array>(), 0, 0, 0},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(each.value.intValue(), each.signedInt) << each.value.description();
    EXPECT_EQ(each.value.unsignedIntValue(), each.unsignedInt) << each.value.description();
    const double real = each.value.doubleValue();
    EXPECT_TRUE(real == each.real || each.value.description() == "nan") << real;
  }
}

template <class T>
void expectHeldExactly(char narrow, char wide) {
  const char type = sizeof(T) > 4 ? wide : narrow;
  for (const T number : {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()}) {
    const Value value(number);
    EXPECT_EQ(value.numberType(), type);
    EXPECT_EQ(value.description(), std::to_string(number));
    const bool isInRange = std::in_range<std::int64_t>(number);
    EXPECT_EQ(value.integer(),
              isInRange ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt);
  }
}

TEST(Value, TakesEveryIntegerType) {
  expectHeldExactly<short>('i', 'q');           // NOLINT(google-runtime-int): every type by name
  expectHeldExactly<unsigned short>('i', 'q');  // NOLINT(google-runtime-int)
  expectHeldExactly<int>('i', 'q');
  expectHeldExactly<unsigned>('I', 'Q');
  expectHeldExactly<long>('i', 'q');                // NOLINT(google-runtime-int)
  expectHeldExactly<unsigned long>('I', 'Q');       // NOLINT(google-runtime-int)
  expectHeldExactly<long long>('i', 'q');           // NOLINT(google-runtime-int)
  expectHeldExactly<unsigned long long>('I', 'Q');  // NOLINT(google-runtime-int)
  EXPECT_EQ(Value(true).numberType(), 'B');
}

TEST(Value, DescribesNumbersTheSameEverywhere) {
  const std::vector<std::pair<Value, std::string>> cases{
      {true, "1"},
      {Value::integerOfType(kMostNegative, 'q'), "-9223372036854775808"},
      {Value::integerOfType(-1, 'Q'), "18446744073709551615"},
      {0.1, "0.1"},
      {0.1F, "0.1"},
      {1.0 / 3, "0.3333333333333333"},
      {100000.0, "100000"},
      {1e22, "1e+22"},
      {-std::numeric_limits<double>::quiet_NaN(), "nan"},
      {-kInfinity, "-inf"},
      {Decimal{-3, -2}, "-0.03"},
      {Decimal{12, 3}, "12000"},
      {Decimal{1, std::numeric_limits<std::int32_t>::max()}, "1e2147483647"},
      {Value(), "(null)"},
  };
  for (const auto& [value, text] : cases) {
    EXPECT_EQ(value.description(), text);
  }
}

/// Values that are equal stand in one row.
TEST(Value, EqualValuesHaveEqualHashesAndOthersDiffer) {
  const auto inner = make<Dictionary>();
  inner->set("Key", 7);
  const std::string_view utf16("\0K\0\xF6\0l\0n", 8);
  const std::vector<std::vector<Value>> rows{
      {Value(), nullptr, Value(Ref<Object>())},
      {1, true, 1.0, std::uint64_t{1}, Decimal{10, -1}},
      {0, -0.0, Decimal{0, 5}},
      {-1, -1.0},
      {std::uint64_t{0xFFFF'FFFF'FFFF'FFFF}},
      {2.5, 2.5F, Decimal{25, -1}, Decimal{2500, -3}},
      {"1", String("1")},
      {"Köln", String(nullptr, utf16, String::Encoding::utf16BigEndian)},
      {Data::copyOf("1")},
      {Date{1.0}},
      {make<Array>(std::vector<Value>{1, "a"}), make<Array>(std::vector<Value>{1.0, "a"})},
      {make<Array>(std::vector<Value>{"a", 1})},
      {Value(inner), Value::weak(*inner)},
      {make<Array>()},
      {make<Dictionary>()},
  };
  for (const auto& row : rows) {
    for (const auto& other : rows) {
      for (const Value& left : row) {
        for (const Value& right : other) {
          EXPECT_EQ(left == right, &row == &other)
              << left.description() << " and " << right.description();
          if (&row == &other) {
            EXPECT_EQ(left.hash(), right.hash()) << left.description();
          }
        }
      }
    }
  }
}

TEST(Value, AnswersNothingForOtherKinds) {
  const Value text = "text";
  EXPECT_FALSE(text.integer() || text.date() || text.data() || text.decimal());
  EXPECT_FALSE(text.array() || text.dictionary() || text.object());
  const Value number = 5;
  EXPECT_FALSE(number.text() || number.string() || number.date());
  EXPECT_FALSE(Value(std::numeric_limits<std::uint64_t>::max()).integer());
  EXPECT_EQ(Value(std::uint64_t{5}).integer(), 5);
}

TEST(Value, SliceKeepsItsBufferAlive) {
  Value part;
  {
    const Data file = Data::copyOf("caption=Sunset;");
    part = String(file.owner(), file.bytes().substr(8, 6));
  }
  const Value copy = part;
  part = nullptr;
  EXPECT_EQ(copy.text(), "Sunset");
}

}  // namespace
}  // namespace mrziphoto
