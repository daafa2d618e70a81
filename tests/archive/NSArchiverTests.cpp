#include "support/ArchiveBytes.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

/// An object that writes whatever it holds.
class Holder : public Object {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  void encodeWithCoder(NSArchiver& coder) const override { coder.encodeObject(contents); }

  Value contents;
};

const Class kBase{"Base", nullptr, 1};
const Class Holder::kClass{"Holder", &kBase, 4};

TEST(NSArchiver, SharesStringsClassesObjectsAndKeys) {
  const Value text = "t";
  const Ref<Holder> holder = make<Holder>();
  holder->contents = list({text, Value::weak(*holder)});
  for (const std::endian order : {std::endian::big, std::endian::little}) {
    NSArchiver archiver(order);
    archiver.setVersionForClassName(7, "Holder");
    archiver.encodeInt(25);
    archiver.encodeObject(list({holder, text, 7, 7, Data::copyOf("12"), holder, "t"}));
    archiver.encodeObject(dictionary({{"k", Date{0.5}}, {"l", dictionary({{"k", 1.0F}})}}));
    archiver.encodeObject({});
    EXPECT_EQ(archiver.archivedData().bytes(), ArchiveBytes::build(R"(
        'i' 25
        '@' new NSArray:0 NSObject:0 nil  S0 7
          S1 new Holder:7 Base:1 O2
            S1 new O1 S0 2  S1 new NSString:1 O2  '+' "t" end  S1 O3 end
          end
          S1 O7
          S1 new NSNumber:0 NSValue:0 O2  '*' new S0  S0 7 end
          S1 new O10  S10 O12  S0 7 end
          S1 new NSData:0 O2  S0 2  '[2c]' x3132 end
          S1 O3
          S1 new O8  S7 "t" end
        end
        S1 new NSDictionary:0 O2  S0 2
          S1 new O8  S7 "k" end  S1 new NSDate:0 O2  'd' d0.5 end
          S1 new O8  S7 "l" end
          S1 new O18  S0 1  S1 O19  S1 new O10  S10 new 'f'  S16 1 end end
        end
        S1 nil)",
                                                                   order));
  }
}

TEST(NSArchiver, WritesEveryPlainTypeInItsShortestForm) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [code, value, form] : Rows<std::string_view, Value, std::string_view>{
           {"c", -1, "xff"},
           {"C", 200, "xc8"},
           {"B", true, "x01"},
           {"s", -32768, "x810080"},
           {"S", 32768, "x810080"},
           {"S", 49151, "x81ffbf"},
           {"i", -110, "x92"},
           {"i", -111, "x8191ff"},
           {"i", 127, "x7f"},
           {"i", 128, "x818000"},
           {"l", 32768, "x8200800000"},
           {"I", 4000000000U, "x8200286bee"},
           {"L", 4294967295U, "xff"},
           {"q", std::int64_t{5000000000}, "x8700f2052a01000000"},
           {"Q", std::uint64_t{18446744073709551613U}, "xfd"},
           {"f", 1.5F, "x830000c03f"},
           {"f", 640, "x818002"},
           {"d", 0.1, "x839a9999999999b93f"},
           {"d", -941389200.0, "x82708ae3c7"},
           {"d", 1e10, "x83000000205fa00242"},
           {"d", -0.0, "x00"},
           {"d", nan, "x83000000000000f87f"},
           {"d", Decimal{28, -1}, "x836666666666660640"},
           {"*", "txt", "new 'txt'"},
           {":", "copy:", "'copy:'"},
           {"%", "atom", "'atom'"},
           {"+", Data::copyOf("ab"), "\"ab\""},
           {"@", {}, "nil"}}) {
    NSArchiver archiver;
    archiver.encodeValueOfObjCType(code, value);
    const std::string type = "'" + std::string(code) + "' ";
    EXPECT_EQ(archiver.archivedData().bytes(), ArchiveBytes::build(type + std::string(form)))
        << code << ' ' << value.description();
  }
}

TEST(NSArchiver, NumbersKeepTheirTypes) {
  std::vector<Value> numbers{2.5F, 2.5, std::uint64_t{18446744073709551615U}};
  for (const char type : std::string_view("cCsSiIlLqQB")) {
    numbers.push_back(Value::integerOfType(100, type));
  }
  NSArchiver archiver;
  archiver.encodeObject(list(numbers));
  const Ref<Array> read =
      NSUnarchiver::initForReadingWithData(archiver.archivedData())->decodeObject().array();
  ASSERT_TRUE(read && read->size() == numbers.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    EXPECT_EQ((*read)[i], numbers[i]);
    EXPECT_EQ((*read)[i].numberType(), numbers[i].numberType());
  }
}

TEST(NSArchiver, RefusesWhatNobodyCouldRead) {
  for (const auto& [type, value] : Rows<std::string_view, Value>{{"@", list({{}})},
                                                                 {"@", dictionary({{"k", {}}})},
                                                                 {"i", "text"},
                                                                 {"i", std::int64_t{1} << 31},
                                                                 {"I", -1},
                                                                 {"Q", -1},
                                                                 {"q", std::uint64_t{1} << 63},
                                                                 {"c", 128},
                                                                 {"i", 1.5},
                                                                 {"d", "1"},
                                                                 {"*", 1},
                                                                 {"+", "text"},
                                                                 {"{ff}", 1.0},
                                                                 {"", 1}}) {
    NSArchiver archiver;
    EXPECT_TRUE(exceptionOf([&archiver, type = type, value = value] {
                  archiver.encodeValueOfObjCType(type, value);
                }).starts_with("NSInvalidArgumentException - "))
        << type << ' ' << value.description();
  }
}

}  // namespace
}  // namespace mrziphoto
