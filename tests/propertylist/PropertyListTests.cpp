#include <cmath>

#include <expat.h>

#include <MRZiPhoto/propertylist/PropertyList.h>

#include "support/Testing.h"

namespace mrziphoto {
namespace {

using namespace std::string_literals;

Value read(std::string_view document) { return propertyListFromData(Data::copyOf(document)); }

/// Nothing when the document is refused.
std::optional<Value> readIfValid(std::string_view document) {
  try {
    return read(document);
  } catch (const NSException&) {
    return std::nullopt;
  }
}

/// The reason for which a document is refused.
std::string failure(std::string_view document) {
  try {
    return "read as " + read(document).description();
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), kNSParseErrorException);
    EXPECT_TRUE(exception.offset() &&
                exception.reason().ends_with("byte " + std::to_string(*exception.offset())))
        << exception.reason();
    return exception.reason();
  }
}

/// The parts of a list that has a bar between two.
Texts partsOf(std::string_view list) {
  Texts parts;
  while (!list.empty()) {
    const std::size_t size = std::min(list.find('|'), list.size());
    parts.emplace_back(list.substr(0, size));
    list.remove_prefix(std::min(size + 1, list.size()));
  }
  return parts;
}

std::string utf16(std::u16string_view text, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

TEST(PropertyList, BuildsTheValueOfEveryElement) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const auto& [element, expected] : Rows<std::string_view, Value>{
           {"<string>Köln</string>", "Köln"},
           {"<string/>", ""},
           {"<string></string>", ""},
           {"<true/>", true},
           {"<false></false>", false},
           {"<integer>42</integer>", std::int64_t{42}},
           {"<integer>\n +0x7F </integer>", std::int64_t{127}},
           {"<integer>-0x1f</integer>", std::int64_t{-31}},
           {"<integer>9223372036854775807</integer>", std::numeric_limits<std::int64_t>::max()},
           {"<integer>-9223372036854775808</integer>", std::numeric_limits<std::int64_t>::min()},
           {"<integer>18446744073709551615</integer>", std::numeric_limits<std::uint64_t>::max()},
           {"<real>398626087.701332</real>", 398626087.701332},
           {"<real> -1.5e-3 </real>", -0.0015},
           {"<real>3</real>", 3.0},
           {"<real>+infinity</real>", kInfinity},
           {"<real>-INF</real>", -kInfinity},
           {"<date>2001-01-01T00:00:01Z</date>", Date{1}},
           {"<date>1904-02-29T12:00:00Z</date>", Date{-3056011200}},
           {"<data>\n\taGVs\r\n\tbG8=\n</data>", Data::copyOf("hello")},
           {"<data/>", Data()},
           {"<array/>", list({})},
           {"<dict></dict>", dictionary({})},
           {"<array><true/><!-- and --><array><string>a</string></array></array>",
            list({true, list({"a"})})},
           // Of equal keys the later stands.
           {"<dict><key>a</key><true/><key>b</key><true/><key>a</key><string>z</string></dict>",
            dictionary({{"a", "z"}, {"b", true}})},
           {"<dict><key>b</key><real>1</real><key>a</key><dict/></dict>",
            dictionary({{"b", 1.0}, {"a", dictionary({})}})}}) {
    const Value value = read("<plist version='1.0'>"s + std::string(element) + "</plist>");
    EXPECT_EQ(value, expected) << element;
    EXPECT_EQ(value.numberType(), expected.numberType()) << element;
    EXPECT_EQ(value, read(element)) << element;
  }
  EXPECT_TRUE(std::isnan(read("<real>nan</real>").doubleValue()));
}

TEST(PropertyList, ReadsTextAsXmlMeansIt) {
  for (const auto& [text, expected] : Rows<std::string_view, std::string_view>{
           {"a &lt;&amp;&gt; &quot;b&apos;", "a <&> \"b'"},
           {"&#65;&#x42;&#x1F600;&#13;&#xd;", "AB\U0001F600\r\r"},
           {"one\r\ntwo\rthree\n\r\n", "one\ntwo\nthree\n\n"},
           {"a<![CDATA[<b>&amp;\r\n]]]]><![CDATA[>]]>c", "a<b>&amp;\n]]>c"},
           {"a<!-- b - c -->d<?e f?>g", "adg"},
           {" ]] > ]>\t\x7F", " ]] > ]>\t\x7F"},
           {"Grüße, \u20AC, \uFFFD, \U0010FFFF", "Grüße, \u20AC, \uFFFD, \U0010FFFF"},
           {"a text of more than sixteen plain characters &amp; more than that again",
            "a text of more than sixteen plain characters & more than that again"}}) {
    const std::string element = "<string>" + std::string(text) + "</string >";
    EXPECT_EQ(read(element).text(), expected) << text;
    const std::string entry = "<dict><key>" + std::string(text) + "</key><true/></dict>";
    EXPECT_TRUE(read(entry).dictionary()->contains(expected)) << text;
  }
}

TEST(PropertyList, SlicesTheFileWhereATextLiesInIt) {
  const Data file = Data::copyOf(
      "<array><string>Zürich</string><string>a&amp;b</string><string>a\rb</string></array>");
  const Ref<Array> texts = propertyListFromData(file).array();
  const auto liesInFile = [&file](const Value& value) {
    const char* start = value.string()->bytes().data();
    return start >= file.bytes().data() && start < file.bytes().data() + file.size();
  };
  EXPECT_TRUE(liesInFile((*texts)[0]));
  EXPECT_EQ((*texts)[0].string()->owner(), file.owner());
  EXPECT_FALSE(liesInFile((*texts)[1]));
  EXPECT_FALSE(liesInFile((*texts)[2]));
}

TEST(PropertyList, SaysWhatIsWrongAndWhere) {
  const std::string name(100, 'n');
  for (const auto& [document, expected] : Rows<std::string, std::string>{
           {"", "has no element at line 1, byte 0"},
           {"<plist>\r\n<dict>\r\n\t<key>a</key>\r", "ends inside <dict> at line 4, byte 31"},
           {"<plist>\n<array></dict>", "closes <array> with </dict> at line 2, byte 15"},
           {"<plist/>", "holds no value at line 1, byte 0"},
           {"<plist><true/><true/></plist>", "holds a second value at line 1, byte 14"},
           {"<dict>\n<key>a</key>\n</dict>", "has no value for the key \"a\" at line 2, byte 7"},
           {"<dict><key>a</key><key>b</key></dict>",
            "has no value for the key \"a\" at line 1, byte 6"},
           {"<dict><true/></dict>", "has a value without a key at line 1, byte 6"},
           {"<array>a</array>", "has text inside <array> at line 1, byte 7"},
           {"<array><![CDATA[ ]]></array>", "has a CDATA section inside <array> at line 1, byte 7"},
           {"<string>a<b/></string>", "has an element inside <string> at line 1, byte 9"},
           {"<key>a</key>", "has <key> in the place of a value at line 1, byte 0"},
           {"<" + name + "/>",
            "has <" + name.substr(0, 60) + "...> in the place of a value at line 1, byte 0"},
           {"<string>&nbsp;</string>", "refers to the unknown entity \"nbsp\" at line 1, byte 9"},
           {"<true/>\n<true/>", "goes on after its root element at line 2, byte 8"},
           {"<string>\xC3</string>", "has bytes that are not UTF-8 at line 1, byte 8"},
           {"<?xml version='1.0' encoding='klingon'?><true/>",
            "declares the unknown encoding \"klingon\" at line 1, byte 40"},
           {"\xFF\xFE"s + utf16(u"<string>\né\xD800</string>", false),
            "has bytes that are not UTF-16LE at line 2, byte 22"},
           {"\xFE\xFF"s + utf16(u"<array>é\U0001F600</array>", true),
            "has text inside <array> at line 1, byte 16"}}) {
    EXPECT_EQ(failure(document), "the property list " + expected) << document;
  }
}

TEST(PropertyList, RefusesMalformedValues) {
  for (const std::string& element :
       partsOf("<integer/>|<integer>1 2</integer>|<integer>--1</integer>|<integer>0x</integer>|"
               "<integer>1.0</integer>|<integer>18446744073709551616</integer>|"
               "<integer>-9223372036854775809</integer>|<real/>|<real>1,5</real>|<real>+-1</real>|"
               "<real>nano</real>|<real>0x1p3</real>|<date/>|<date>2001-02-29T00:00:00Z</date>|"
               "<date>2001-01-01</date>|<data>QUJ</data>|<data>QU=D</data>|<data>Q===</data>|"
               "<data>QUJD-</data>|<true>1</true>|<Dict/>|<plist><plist><true/></plist></plist>")) {
    EXPECT_FALSE(readIfValid(element)) << element;
  }
}

TEST(PropertyList, BoundsNesting) {
  const auto nested = [](std::size_t levels) {
    return repeated("<array>", levels) + repeated("</array>", levels);
  };
  EXPECT_TRUE(readIfValid(nested(Limits::current().nesting)));
  EXPECT_EQ(failure(nested(Limits::current().nesting + 1)),
            "the property list is nested too deeply at line 1, byte 1792");
  EXPECT_FALSE(readIfValid(repeated("<dict><key/>", 1000000)));
}

TEST(PropertyList, ReadsOtherEncodings) {
  const std::u16string wide = u"<string>Zürich \U0001F600</string>";
  const std::u16string declared = u"<?xml version='1.0' encoding='utf-16'?>" + wide;
  const Value expected = "Zürich \U0001F600";
  for (const bool bigEndian : {false, true}) {
    const std::string mark = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    EXPECT_EQ(read(mark + utf16(wide, bigEndian)), expected);
    EXPECT_EQ(read(utf16(wide, bigEndian)), expected);
    EXPECT_EQ(read(utf16(declared, bigEndian)), expected);
    EXPECT_FALSE(readIfValid(utf16(declared, bigEndian) + "\n"));
  }
  EXPECT_EQ(read("\xEF\xBB\xBF<string>Zürich</string>"), Value("Zürich"));
  const auto inEncoding = [](std::string_view name, std::string_view bytes) {
    return read("<?xml version=\"1.0\" encoding=\"" + std::string(name) + "\"?><string>" +
                std::string(bytes) + "</string>");
  };
  EXPECT_EQ(inEncoding("iso-8859-1", "Z\xFCrich"), Value("Zürich"));
  EXPECT_EQ(inEncoding("macintosh", "Z\x9Frich"), Value("Zürich"));
  EXPECT_EQ(inEncoding("Shift_JIS", "\x93\x8C\x8B\x9E"), Value("東京"));
  for (const std::string_view document :
       {"<?xml version='1.0' encoding='UTF-16'?><true/>",
        "<?xml version='1.0' encoding='EBCDIC-US'?><true/>",
        "<?xml version='1.0' encoding='us-ascii'?><string>\xC3\xBC</string>"}) {
    EXPECT_FALSE(readIfValid(document)) << document;
  }
  EXPECT_FALSE(readIfValid(utf16(u"<?xml version='1.0' encoding='UTF-8'?><true/>", true)));
}

/// The elements and texts that Expat finds in a document, written in the plainest way.
struct ExpatReading {
  explicit ExpatReading(std::string_view document) {
    const XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &plain);
    XML_SetElementHandler(
        parser, [](void* plain, const char* name, const char**) { append(plain, "<", name, ">"); },
        [](void* plain, const char* name) { append(plain, "</", name, ">"); });
    XML_SetCharacterDataHandler(parser, [](void* plain, const char* text, int size) {
      for (const char character : std::string_view(text, static_cast<std::size_t>(size))) {
        const bool isPlain = std::string_view("<>&\r").find(character) == std::string::npos;
        append(plain,
               isPlain ? std::string(1, character) : "&#" + std::to_string(int{character}) + ';');
      }
    });
    // What an external document type may define, we do not know either.
    XML_SetSkippedEntityHandler(
        parser, [](void* plain, const char* name, int) { append(plain, "&", name, ";"); });
    XML_Parse(parser, document.data(), static_cast<int>(document.size()), XML_TRUE);
    error = XML_GetErrorCode(parser);
    XML_ParserFree(parser);
  }

  XML_Error error;
  std::string plain;

 private:
  template <class... Text>
  static void append(void* plain, const Text&... texts) {
    ((*static_cast<std::string*>(plain) += texts), ...);
  }
};

/// Expects that we find in a document what Expat finds in it.
void compare(const std::string& document) {
  const ExpatReading expats(document);
  if (expats.error == XML_ERROR_UNKNOWN_ENCODING) {
    return;  // Expat knows four encodings
  }
  const std::optional<Value> ours = readIfValid(document);
  const std::optional<Value> theirs =
      expats.error == XML_ERROR_NONE ? readIfValid(expats.plain) : std::nullopt;
  ASSERT_EQ(ours.has_value(), theirs.has_value())
      << document << '\n'
      << (ours ? "Expat reads " + expats.plain : failure(document));
  EXPECT_EQ(ours, theirs) << document;
}

// Parts of documents.
constexpr std::string_view kBesideRoot =
    "<?xml version='1.0'?>|<?xml version=\"1.0\" encoding='UTF-8' standalone = 'yes' ?>|"
    "<?xml version='1.0'standalone='yes'?>|<?xml version='1.0' standalone='maybe'?>|"
    "<?xml encoding='UTF-8'?>|<?xml version='1.0' standalone='no' encoding='UTF-8'?>|"
    "<?xml version='1.0' encoding=''?>|<?xml version='1.0' encoding='8859'?>|"
    "<?xml version=1.0?>|<?xml?>|<?xml version='1.0'>| <?xml version='1.0'?>|"
    "<?XML version='1.0'?>|<?xml-style a?>|<?a?><?b c?d?>|<?a=b?>|<? a?>|<?a|<!---->|"
    "<!-- - -->|<!-- -- -->|<!--->|<!-- --->|<!- a ->|a|&#32;|<![CDATA[]]>|\xEF\xBB\xBF|"
    "\xEF\xBB\xBF\xEF\xBB\xBF|\xEF\xBB|<!DOCTYPE plist>|<!DOCTYPE>|<!DOCTYPE plist SYSTEM>|"
    "<!DOCTYPE plist SYSTEM 'a\"<&b' >|<!DOCTYPE plist SYSTEM'a'>|<!DOCTYPE plist PUBLIC 'a'>|"
    "<!DOCTYPE plist PUBLIC 'a''b'>|<!DOCTYPE plist PUBLIC 'a' 'b'[]>|<!DOCTYPE plist[]]>|"
    "<!DOCTYPE plist PUBLIC 'a\tb' 'c'>|<!DOCTYPE plist PUBLIC 'a}' 'c'>|"
    "<!DOCTYPE plist [<!ELEMENT plist ANY> ] >|<!DOCTYPE plist [<!ELEMENT plist ANY]>|"
    "<!DOCTYPE plist [<!-- ]> --><?a ]>?>%p; <!ENTITY a ']>'><!NOTATION n SYSTEM \"'>\">]>|"
    "<!DOCTYPE plist [<!ELEMENTS a ANY>]>|<!DOCTYPE plist [<![INCLUDE[]]>]>|"
    "<!DOCTYPE plist [<?xml version='1.0'?>]>|<!DOCTYPE plist [%p]>|<!DOCTYPE plist [a]>|"
    "<!DOCTYPE a><!DOCTYPE a>|<!doctype plist>|"
    "<?xml version='1.0'?><!-- a --><!DOCTYPE plist><?b?>";
constexpr std::string_view kRoots =
    "<true a='1' b=\"2\"/>|<true a='1'b='2'/>|<true a='1' a='2'/>|<true a/>|<true a=1/>|"
    "<true a='<'/>|<true a='>'/>|<true a='&amp;&#9;'/>|<true a='&b;'/>|<true a='&'/>|"
    "<true 1='a'/>|<true a:b='1' _='2' :-.='3' é\u0300='4'/>|<true \u00D7='1'/>|"
    "<true\n\r\t/>|<true / >|< true/>|<true/|<true></ true>|<true></true\n>|<true></true|"
    "<true></true a='1'>|<true></tru></true>|<array>\u00A0</array>|";
constexpr std::string_view kTexts =
    "]]>|]]]>|]>|]]&gt;|]]|<![CDATA[]]]]>]]>|<![CDATA[ ]] ]]>|<![CDATA[|<![cdata[]]>|"
    "<!DOCTYPE a>|<?xml version='1.0'?>|&#0;|&#8;|&#9;|&#x1F;|&#x20;|&#xD7FF;|&#xD800;|"
    "&#xDFFF;|&#xFFFD;|&#xFFFE;|&#x1FFFE;|&#x10FFFF;|&#x110000;|&#99999999999999999999;|&#;|"
    "&#x;|&#X41;|&#xg;|&#a;|&#65|&lt|& lt;|&lt ;|&;|&|&LT;|\x01|\x1F|\x7F|\u0080|\uFFFD|\uFFFE|"
    "\uFFFF|\U0001FFFE|\x80|\xC0\x80|\xC1\xBF|\xC2|\xE0\x9F\xBF|\xED\xA0\x80|\xED\x9F\xBF|"
    "\xF0\x8F\xBF\xBF|\xF4\x90\x80\x80|\xF5\x80\x80\x80|\xFF|<!-- \x02 -->|<?a \x80?>|"
    "<![CDATA[\uFFFF]]>|a\r\n\rb<!-- -->\n\r<![CDATA[\r\n]]>";

TEST(PropertyListAndExpat, AgreeOnWhatIsWellFormed) {
  for (const std::string& part : partsOf(kBesideRoot)) {
    compare(part + "<true/>");
    compare("<true/>" + part);
  }
  for (const std::string& root : partsOf(kRoots)) {
    compare(root);
  }
  for (const std::string& text : partsOf(kTexts)) {
    compare("<string>" + text + "</string>");
    compare("<dict><key>" + text + "</key><true/></dict>");
  }
  compare("<string>a\0b</string>"s);
}

constexpr std::string_view kDocument =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//A//B\" 'http://c' [<!-- d --> <?e f?>] >\n"
    "<plist version=\"1.0\">\r\n<dict>\n"
    "\t<key>g</key><!--h--><array><string>i&amp;&#x6a;</string><true/></array>\n"
    "\t<key>k]</key><string a='l' >m<![CDATA[n]]></string>\n"
    "</dict></plist><?o?>";

TEST(PropertyListAndExpat, AgreeOnDamagedDocuments) {
  const std::string document(kDocument);
  ASSERT_TRUE(readIfValid(document));
  const std::string_view damage("<>&;'\"/!?-[]= x\r\n\x01:#A\xC3\xFF\0", 24);
  for (std::size_t at = 0; at < document.size(); ++at) {
    compare(document.substr(0, at));
    compare(document.substr(0, at) + document.substr(at + 1));
    for (const char character : damage) {
      std::string changed = document;
      changed[at] = character;
      compare(changed);
      compare(document.substr(0, at) + character + document.substr(at));
    }
  }
}

TEST(PropertyListWriter, WritesWhatTheReaderReads) {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) {
    everyByte += static_cast<char>(byte);
  }
  const Value value =
      dictionary({{"<&>", "]]> \r\n \"'\t"},
                  {"", list({})},
                  {"numbers", list({true, false, std::numeric_limits<std::uint64_t>::max(), -1, 0.1,
                                    1e300, 5e-324, std::numeric_limits<double>::infinity()})},
                  {"bytes", list({Data(), Data::copyOf("ab"), Data::copyOf(everyByte)})},
                  {"date", Date{-62135596800.0 + 978307200}}});
  const std::string text = propertyListFromValue(value);
  EXPECT_EQ(read(text), value) << text;
  EXPECT_TRUE(ExpatReading(text).error == XML_ERROR_NONE);

  PropertyListWriter pieces;
  pieces.beginPropertyList();
  pieces.beginDictionary();
  pieces.key("one");
  pieces.integer(-1);
  pieces.key("half & none");
  pieces.beginArray();
  pieces.real("0.50");
  pieces.boolean(false);
  pieces.endArray();
  pieces.endDictionary();
  pieces.endPropertyList();
  EXPECT_EQ(pieces.text().substr(pieces.text().find("<dict>")),
            "<dict>\n\t<key>one</key>\n\t<integer>-1</integer>\n\t<key>half &amp; none</key>\n"
            "\t<array>\n\t\t<real>0.50</real>\n\t\t<false/>\n\t</array>\n</dict>\n</plist>\n");
}

TEST(PropertyListWriter, RefusesWhatNoPropertyListHolds) {
  Value deep = list({});
  for (std::size_t i = 0; i < Limits::current().nesting; ++i) {
    deep = list({deep});
  }
  const Ref<Array> circle = make<Array>();
  circle->append(Value::weak(*circle));
  for (const Value& value : {Value(), Value("\x01"), Value("\uFFFE"), Value(Date{1e12}),
                             Value(dictionary({{"\x02", true}})), deep, Value(circle)}) {
    EXPECT_THROW((void)propertyListFromValue(value), NSException);
  }
}

}  // namespace
}  // namespace mrziphoto
