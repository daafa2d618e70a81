#include <functional>

#include <MRZiPhoto/values/Object.h>

#include "support/ArchiveBytes.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

constexpr std::uint32_t kNotFound = NSUnarchiver::kNotFound;

/// A registered class of the tests; it reads and writes one object.
class Record : public Object {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  void initWithCoder(NSUnarchiver& coder) override {
    versions = {coder.versionForClassName("Record"), coder.versionForClassName("BaseRecord"),
                coder.versionForClassName("Stranger")};
    contents = coder.decodeObject();
  }
  void encodeWithCoder(NSArchiver& coder) const override { coder.encodeObject(contents); }

  Value contents;
  std::vector<std::uint32_t> versions;
};

const Class kBaseRecord{"BaseRecord", nullptr, 1};
const Class Record::kClass{"Record", &kBaseRecord, 4, &makeEmpty<Record>};
[[maybe_unused]] const bool registered = [] {
  ClassRegistry::add(Record::kClass);
  return true;
}();

std::unique_ptr<NSUnarchiver> open(const std::string& bytes) {
  return NSUnarchiver::initForReadingWithData(Data::copyOf(bytes));
}

/// "reason @ offset" of what `use` throws; empty when it throws nothing.
std::string failure(const std::function<void()>& use) {
  try {
    use();
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), kNSInconsistentArchiveException);
    return exception.reason() + " @ " + std::to_string(exception.offset().value_or(0));
  }
  return {};
}

class NSUnarchiverInOrder : public testing::TestWithParam<std::endian> {
 protected:
  static std::unique_ptr<NSUnarchiver> openListing(std::string_view listing) {
    return open(ArchiveBytes::build(listing, GetParam()));
  }
};
INSTANTIATE_TEST_SUITE_P(ByteOrders, NSUnarchiverInOrder,
                         testing::Values(std::endian::big, std::endian::little),
                         [](const auto& tested) {
                           return tested.param == std::endian::big ? "Big" : "Little";
                         });

TEST_P(NSUnarchiverInOrder, StopsRightBehindWhatItReads) {
  const auto reader = openListing(R"(
      'i' 15
      '@' new NSDictionary:0 NSObject:0 nil
        S0 1
        S1 new NSString:1 O2  '+' "Count" end
        S1 new NSNumber:0 NSValue:0 O2  '*' new S0  S0 3 end
      end
      x000100000002)");
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->byteOrder(), GetParam());
  EXPECT_EQ(reader->systemVersion(), 1000U);
  EXPECT_EQ(reader->cursor(), 16U);
  EXPECT_EQ(reader->decodeInt(), 15);
  EXPECT_EQ(reader->cursor(), 20U);
  const Value object = reader->decodeObject();
  EXPECT_EQ(object, dictionary({{"Count", 3}}));
  EXPECT_EQ(object.dictionary()->get("Count").numberType(), 'i');
  EXPECT_EQ(reader->cursor(), 115U);
  EXPECT_FALSE(reader->isAtEnd());
  EXPECT_EQ(failure([&] { reader->decodeObject(); }),
            "*** Incorrect archive: reference to what has not been read @ 115");
}

TEST_P(NSUnarchiverInOrder, ReadsEveryType) {
  const auto reader = openListing(kEveryType);
  for (const auto& [type, expected] :
       Rows<std::string_view, Value>{{"c", -1},
                                     {"C", 200},
                                     {"s", -300},
                                     {"S", 65535},
                                     {"i", -1},
                                     {"i", -110},
                                     {"i", -111},
                                     {"i", 32768},
                                     {"I", 4000000000U},
                                     {"q", std::int64_t{5000000000}},
                                     {"Q", std::uint64_t{18446744073709551613U}},
                                     {"f", 0.5F},
                                     {"d", -2.0},
                                     {"d", 0.1},
                                     {"*", "txt"},
                                     {"*", "txt"},
                                     {"*", {}},
                                     {"%", "atom"},
                                     {":", "copy:"},
                                     {"#", "NSString"},
                                     {"+", Data::copyOf("\x86\x84")},
                                     {"[3i]", list({1, -2, 300})},
                                     {"[4c]", Data::copyOf({"\0\x84\x86\xFF", 4})},
                                     {"{_NSPoint=ff}", list({1.0F, 2.5F})},
                                     {"iI", list({1, 5})},
                                     {"@", {}}}) {
    SCOPED_TRACE(type);
    const Value value = reader->decodeValueOfObjCType(type);
    EXPECT_EQ(value, expected);
    EXPECT_EQ(value.description(), expected.description());
    if (value.isNumber()) {
      EXPECT_EQ(value.numberType(), type[0]);
    }
  }
  EXPECT_TRUE(reader->isAtEnd());
}

TEST_P(NSUnarchiverInOrder, ReadsAnObjectThatIsNothingElse) {
  const auto reader = openListing("'@' new NSObject:0 nil end");
  EXPECT_EQ(reader->decodeObject().className(), "NSObject");
  EXPECT_TRUE(reader->isAtEnd());
}

TEST_P(NSUnarchiverInOrder, ReadsCollectionsDatesAndBytes) {
  const auto reader = openListing(R"(
      '@' new NSMutableDictionary:0 NSDictionary:0 NSObject:0 nil
        'i' 5
        S0 new NSString:1 O3  '+' "ModDate" end   S0 new NSDate:7 O3  'd' d123456789.25 end
        S0 new O5  S6 "Day" end                   S0 new O7  S8 86400 end
        S0 new O5  S6 "Blob" end                  S0 new NSData:0 O3  S4 3  '[3c]' x848586 end
        S0 new O5  S6 "Set" end
        S0 new NSSet:0 O3  'I' 2  S0 O4  S0 new NSNull:0 O3 end end
        S0 new O7  S8 1 end                       S0 new NSMutableData:0 O12  S4 0  '[0c]' end
      end)");
  const Value value = reader->decodeObject();
  EXPECT_TRUE(reader->isAtEnd());
  EXPECT_EQ(reader->versionForClassName("NSDate"), 7U);
  EXPECT_EQ(value, dictionary({{"ModDate", Date{123456789.25}},
                               {"Day", Date{86400}},
                               {"Blob", Data::copyOf("\x84\x85\x86")},
                               {"Set", list({"ModDate", {}})},
                               {"2001-01-01 00:00:01 +0000", Data()}}));
}

TEST_P(NSUnarchiverInOrder, KeepsTablesAndVersionsFromRootToRoot) {
  const auto reader = openListing(R"(
      'i' 25
      '@' new Record:0 BaseRecord:3 NSObject:0 nil  S1 new NSString:1 O3  '+' "Key" end end
      S1 new O1  S1 O4 end
      S1 O4)");
  EXPECT_EQ(reader->versionForClassName("Record"), kNotFound);
  EXPECT_EQ(reader->decodeInt(), 25);
  const Ref<Record> first = reader->decodeObject().object<Record>();
  const std::size_t behindFirst = reader->cursor();
  const Ref<Record> second = reader->decodeObject().object<Record>();
  EXPECT_EQ(reader->cursor(), behindFirst + 6);
  const Value text = reader->decodeObject();
  EXPECT_TRUE(reader->isAtEnd());
  ASSERT_TRUE(first && second);
  EXPECT_EQ(first->versions, (std::vector<std::uint32_t>{0, 3, kNotFound}));
  EXPECT_EQ(second->versions, first->versions);
  EXPECT_EQ(first->contents, text);
  // One string object: the very same characters.
  EXPECT_EQ(second->contents.string()->bytes().data(), text.string()->bytes().data());
}

TEST(NSUnarchiver, PassesOverWhatItNeedNotKnow) {
  const auto reader = open(ArchiveBytes::build(R"(
      '@' new NSAttributedString:0 NSObject:0 nil
        S0 new NSString:1 O2  '+' "Hello" end
        'iI' 1 5
        S0 new NSDictionary:0 O2  'i' 1
          S0 new O4  S4 "b" end
          S0 new NSFont:9 O2  S4 "Times" end
        end
      end
      S0 new NSURL:0 O2
        'c' x01  S0 new O11  S10 x00  S0 O3 end
        S0 new O4  S4 "b.jpg" end
      end
      S0 new NSCalendarDate:0 NSDate:0 O2
        'd' 60  S0 new NSLocalTimeZone:0 O2 end  S0 O3
      end
      S0 new NSValue:0 O2  '*' new '{r={p=ff}{s=ff}}'  S17 0 0 640 f480.5 end
      S0 O5
      S0 O8)"));
  EXPECT_EQ(reader->decodeObject(), Value("Hello"));
  EXPECT_EQ(reader->decodeObject(), Value("b.jpg"));
  EXPECT_EQ(reader->decodeObject(), Value(Date{60}));
  EXPECT_EQ(reader->decodeObject(), list({0, 0, 640, 480.5}));
  // What was passed over can be referred to, as far as its classes are known.
  EXPECT_EQ(reader->decodeObject().dictionary()->get("b").className(), "NSFont");
  EXPECT_EQ(failure([&] { reader->decodeObject(); }),
            "*** class error for 'NSFont': class not loaded @ 288");
}

TEST(NSUnarchiver, SlicesTheArchiveAndRepairsWhatIsNoText) {
  Data archive = Data::copyOf(ArchiveBytes::build(R"(
      '@' new NSString:1 NSObject:0 nil  '+' x05636166c3a9 end
      S0 new O1  S3 x04636166e9 end)"));
  auto reader = NSUnarchiver::initForReadingWithData(archive);
  const Value good = reader->decodeObject();
  const Value bad = reader->decodeObject();
  EXPECT_EQ(good.string()->owner(), archive.owner());
  archive = {};
  reader.reset();
  EXPECT_EQ(good.text(), "caf\xC3\xA9");
  EXPECT_EQ(bad.text(), "caf\xEF\xBF\xBD");
}

TEST(NSUnarchiver, HandsOutWeakReferencesToWhatIsStillBeingRead) {
  const auto reader = open(ArchiveBytes::build(R"(
      '@' new Record:0 NSObject:0 nil
        S0 new NSArray:0 O2  'i' 2  S0 O0  S0 O3 end
      end)"));
  const Ref<Record> record = reader->decodeObject().object<Record>();
  ASSERT_TRUE(record);
  const Ref<Array> array = record->contents.array();
  ASSERT_TRUE(array && array->size() == 2);
  EXPECT_TRUE((*array)[0].isWeak() && (*array)[1].isWeak());
  EXPECT_EQ((*array)[0].object(), Ref<Object>(record));
  EXPECT_EQ((*array)[1].object(), Ref<Object>(array));
  EXPECT_EQ(array->description(), "(\n    \"<Record>\",\n    \"<NSArray>\"\n)");
}

TEST(NSUnarchiver, AnswersNothingForWhatIsNoArchive) {
  const std::string good = ArchiveBytes::build("");
  const auto with = [&good](std::size_t at, char byte) {
    std::string changed = good;
    changed[at] = byte;
    return changed;
  };
  for (const std::string& bytes :
       {std::string(), good.substr(0, 1), with(0, 5), with(0, 3), with(12, 's'), with(1, 10),
        good.substr(0, 15), good.substr(0, 13), with(13, '\x84'), std::string("<?xml version="),
        std::string("bplist00 and more")}) {
    EXPECT_FALSE(open(bytes)) << bytes;
  }
  EXPECT_TRUE(open(good)->isAtEnd());
  EXPECT_EQ(open(good.substr(0, 13) + '\x52')->systemVersion(), 82U);
}

TEST(NSUnarchiver, RefusesDamageByNameReasonAndOffset) {
  struct Damage {
    const char* asked;
    std::string listing;
    std::string failure;
  };
  const std::string array = "'@' new NSArray:0 NSObject:0 nil 'i' ";
  std::string nested = array + "1";
  std::string chain = "'@' new";
  for (int i = 0; i < 1000; ++i) {
    nested += " S0 new O1 S3 1";
    chain += i < 65 ? " C" + std::to_string(i) + ":0" : "";
  }
  const std::string unread = "*** Incorrect archive: reference to what has not been read";
  const std::string unexpected = "*** Incorrect archive: unexpected byte";
  const std::string early = "*** End of archive encountered prematurely at ";
  const std::string inconsistent =
      "*** NSUnarchiver: inconsistency between written and read data for object of class ";
  const std::vector<Damage> damages{
      {"@", "'i' 42", "file inconsistency: read 'i', expecting '@' @ 16"},
      {"i", "'I' 42", "file inconsistency: read 'I', expecting 'i' @ 16"},
      {"@", "S0", unread + " @ 16"},
      {"@", "'@' O0", unread + " @ 19"},
      {"@", "'@' new NSNull:0 nil", early + "31 @ 31"},
      {"+", "'+' x7f61", early + "21 @ 20"},
      {"+", "'+' x81ffff", "*** Incorrect archive: length -1 @ 19"},
      {"[2000000000c]", "'[2000000000c]' x0000", early + "33 @ 31"},
      {"[3[800000000i]]", "'[3[800000000i]]' x0000", early + "35 @ 33"},
      {"@", "end", unexpected + " @ 16"},
      {"@", "nil", unexpected + " @ 16"},
      {"@", "'@' new nil end", "class error for 'NULL': found null class @ 20"},
      {"@", "'@' new A:0 O1 end", "*** Incorrect archive: reference to what is no class @ 25"},
      {"@", "'@' new new x840141 end", unexpected + " @ 24"},
      {"@", "'@' new new nil 0 nil end", "*** Incorrect archive: no name @ 21"},
      {"@", "'@' new new x84024100 0 nil end", "*** Incorrect archive: no name @ 21"},
      {"@", "'@' new NSArray:0 nil 'i' 1 S0 O1 end",
       "*** Incorrect archive: reference to what is no object @ 37"},
      {"@", "'@' new NSNull:0 nil S0 O1 end", inconsistent + "NSNull @ 31"},
      {"@", array + "0 'c' x00 end", inconsistent + "NSArray @ 48"},
      {"@", "'@' new Record:0 nil end", unexpected + " @ 31"},
      {"i", "'i' x84", unexpected + " @ 19"},
      {"i", "'i' x80", unexpected + " @ 19"},
      {"i", "'i' x87", early + "20 @ 20"},
      {"C", "'C'", early + "19 @ 19"},
      {"*", "'*' O0", unread + " @ 19"},
      {"i", "'i' 5000000000",
       "*** Incorrect archive: number 5000000000 does not fit type 'i' @ 19"},
      {"S", "'S' 65536", "*** Incorrect archive: number 65536 does not fit type 'S' @ 19"},
      {"", "''", "type descriptor error: a type string of 0 bytes @ 16"},
      {"[3c", "'[3c'", "type descriptor error for '[3c': missing ']' in type descriptor @ 16"},
      {"[c]", "'[c]'", "type descriptor error for '[c]': unusable number of array elements @ 16"},
      {"i}", "'i}'", "type descriptor error for 'i}': excess characters in type descriptor @ 16"},
      {"i~", "'i~'", "type descriptor error for '~': unknown type descriptor @ 16"},
      {"(i)", "'(i)'", "type descriptor error for '(': unknown type descriptor @ 16"},
      {"[9!]", "'[9!]'", "type descriptor error for '[9!]': array elements without bytes @ 16"},
      {"!", "'!!!!!!!!!'", "type descriptor error: too many types without bytes @ 16"},
      {"{", "'" + std::string(40, '{') + "'",
       "type descriptor error: types are nested more than 32 deep @ 16"},
      {"@", nested, "*** Incorrect archive: objects are nested more than 256 deep @ 1325"},
      {"@", chain, early + "465 @ 465"},
      {"@", chain + " nil", "*** Incorrect archive: a class with more than 63 above it @ 466"},
      {"@", array + "2 S0 nil S0 nil end",
       "*** Incorrect archive: a collection with nil in it @ 49"},
      {"@", array + "-1 end", "*** Incorrect archive: -1 elements in 1 bytes @ 44"},
      {"@", array + "100 end", "*** Incorrect archive: 100 elements in 1 bytes @ 44"},
      {"@", "'@' new NSWindow:0 nil end", "*** class error for 'NSWindow': class not loaded @ 33"},
      {"@", "'@' new NSURL:0 nil 'c' x00 S0 O0 end",
       "*** Incorrect archive: reference to an object that has not been read yet @ 36"},
      {"@", "'@' new NSString:1 nil '+' nil end",
       "*** Incorrect archive: a string without characters @ 37"},
      {"@", "'@' new NSNumber:0 nil '*' new 'i' '+' \"1\" end",
       "*** Incorrect archive: a number without a value @ 45"}};
  for (const Damage& each : damages) {
    const auto reader = open(ArchiveBytes::build(each.listing));
    EXPECT_EQ(failure([&] { reader->decodeValueOfObjCType(each.asked); }), each.failure)
        << each.listing.substr(0, 100);
  }
}

TEST(NSUnarchiver, RefusesWhatWouldSwell) {
  // Each array holds the one before it: twice in the one archive, as a root in the other.
  std::string doubling = "'@' new NSArray:0 NSObject:0 nil 'i' 0 end";
  std::string deep = doubling;
  for (int last = 0; last < 400; ++last) {
    const std::string previous = " S0 O" + std::to_string(last == 0 ? 0 : last + 2);
    doubling += " S0 new O1 S3 2";
    doubling += previous;
    doubling += previous + " end";
    deep += " S0 new O1 S3 1";
    deep += previous + " end";
  }
  std::string repeating = "'*' new '" + std::string(30000, 'x') + "' '[20000*]'";
  for (int i = 0; i < 20000; ++i) {
    repeating += " O0";
  }
  const std::string swelling = "*** Incorrect archive: it repeats itself out of all proportion";
  const auto reasonFor = [](const std::string& listing) {
    const auto reader = open(ArchiveBytes::build(listing));
    const std::string what = failure([&] {
      while (!reader->isAtEnd()) {
        reader->decodeGroup();
      }
    });
    return what.substr(0, what.find(" @"));
  };
  EXPECT_EQ(reasonFor(doubling), swelling);
  EXPECT_EQ(reasonFor(repeating), swelling);
  EXPECT_EQ(reasonFor(deep), "*** Incorrect archive: references lead more than 256 objects deep");
}

/// Reads all of it, and looks at what came out.
void readAll(const std::string& bytes) {
  const auto reader = open(bytes);
  try {
    while (reader && !reader->isAtEnd()) {
      const Value value = reader->decodeGroup();
      EXPECT_EQ(value.hash(), Value(value).hash()) << value.description();
    }
  } catch (const NSException& exception) {
    EXPECT_LE(exception.offset().value_or(bytes.size() + 1), bytes.size()) << exception.what();
  }
}

TEST(NSUnarchiver, ReadsOrRefusesAnythingCutOrChanged) {
  NSArchiver archiver(std::endian::big);
  const Ref<Record> record = make<Record>();
  record->contents = dictionary({{"date", Date{1.5}},
                                 {"data", Data::copyOf("1234")},
                                 {"number", std::int64_t{1} << 40},
                                 {"list", list({"a", "b", 2.5F, Value::weak(*record)})}});
  archiver.encodeObject(record);
  archiver.encodeObject(record->contents);
  for (const std::string& whole :
       {std::string(archiver.archivedData().bytes()), ArchiveBytes::build(kEveryType)}) {
    for (std::size_t i = 0; i < whole.size(); ++i) {
      readAll(whole.substr(0, i));
      std::string changed = whole;
      for (const int byte : {0x00, 0x7F, 0x80, 0x81, 0x84, 0x85, 0x86, 0x92, 0xFF, ~whole[i]}) {
        changed[i] = static_cast<char>(byte);
        readAll(changed);
      }
    }
  }
}

}  // namespace
}  // namespace mrziphoto
