#include <MRZiPhoto/albumdata/detail/AlbumData.h>
#include <MRZiPhoto/files/FileFailure.h>
#include <MRZiPhoto/propertylist/PropertyList.h>
#include <MRZiPhoto/table/detail/PhotoFacts.h>

#include "support/AlbumDataText.h"

namespace mrziphoto {
namespace {

std::optional<AlbumData> readPlain(std::string_view document,
                                   std::size_t window = PlainMarkup::kWindow) {
  return AlbumData::fromPlainMarkup(
      [document](std::span<char> room) mutable {
        const std::size_t count = document.copy(room.data(), room.size());
        document.remove_prefix(count);
        return count;
      },
      window);
}

Value generally(std::string_view document) { return propertyListFromData(Data::copyOf(document)); }

/// How a file lays its markup out.
struct Layout {
  std::string_view name;
  std::string_view lineEnd;
  std::string_view margin;    // of each level
  std::string_view afterKey;  // between a key and its value
};

constexpr Layout kLayouts[]{{"tabs", "\n", "\t", "\n"},
                            {"a line for key and value", "\n", "\t", ""},
                            {"blanks", "\n", "    ", " "},
                            {"a PC's line ends", "\r\n", "\t", "\r\n"},
                            {"an old Mac's", "\r", "\t", ""},
                            {"compact", "", "", ""},
                            {"blank lines", "\n\n\n", " ", "\n\n"}};

/// A document in which <line>s stand as they are written here, one element or tag each.
std::string document(const Layout& layout, const std::vector<std::string_view>& lines) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
  text.append(layout.lineEnd)
      .append(
          "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
          "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">")
      .append(layout.lineEnd)
      .append("<plist version=\"1.0\">")
      .append(layout.lineEnd);
  std::size_t level = 0;
  bool isValue = false;
  for (const std::string_view line : lines) {
    level -= line.starts_with("</") ? 1 : 0;
    if (!isValue || layout.afterKey.find_first_of("\r\n") != std::string_view::npos) {
      for (std::size_t i = 0; i < level; ++i) {
        text += layout.margin;
      }
    }
    text += line;
    isValue = line.starts_with("<key>");
    text += isValue ? layout.afterKey : layout.lineEnd;
    level += line == "<dict>" || line == "<array>" ? 1 : 0;
  }
  return text.append("</plist>").append(layout.lineEnd);
}

/// The elements of a piece of markup, a tag of a dictionary or an array for itself.
std::vector<std::string_view> elementsOf(std::string_view markup) {
  std::vector<std::string_view> elements;
  while (!markup.empty()) {
    std::size_t end = markup.find('>') + 1;
    const std::string_view tag = markup.substr(0, end);
    if (tag != "<dict>" && tag != "<array>" && tag[1] != '/' && tag[end - 2] != '/') {
      end = markup.find('>', end) + 1;
    }
    elements.push_back(markup.substr(0, end));
    markup.remove_prefix(std::min(markup.find('<', end), markup.size()));
  }
  return elements;
}

const std::vector<std::string_view> kLibrary = elementsOf(R"(<dict>
<key>Application Version</key><string>9.4</string>
<key>Archive Path</key><string>/Users/a &amp; b/iPhoto Library</string>
<key>Major Version</key><integer>2</integer>
<key>List of Albums</key><array>
  <dict>
    <key>AlbumName</key><string>Café &lt;1&gt; &quot;&apos;</string>
    <key>Master</key><true/>
    <key>KeyList</key><array><string>7</string><string>4294967295</string></array>
  </dict>
  <dict><key>KeyList</key><array></array></dict>
</array>
<key>Master Image List</key><dict>
  <key>7</key><dict>
    <key>Caption</key><string>two
lines, 100 % &#233;&#x1F600;</string>
    <key>Comment</key><string> </string>
    <key>Rating</key><integer>-3</integer>
    <key>Aspect Ratio</key><real>1.333333</real>
    <key>DateAsTimerInterval</key><real>398625528.500000</real>
    <key>ModDateAsTimerInterval</key><real>-1.5e3</real>
    <key>ImagePath</key><string>/Users/a/Masters/2013/P1.jpg</string>
    <key>ThumbPath</key><string>P1.jpg</string>
    <key>Keywords</key><array><string>4</string><string>12</string></array>
  </dict>
  <key>3</key><dict>
    <key>GUID</key><string>sqrVoO2gRu+KJa+elHSYsg</string>
    <key>ImagePath</key><string>/Users/a/Masters/2013/]] P2.jpg</string>
    <key>Faces</key><array><dict>
      <key>rectangle</key><string>{{0.3, 0.2}, {0.1, 0.1}}</string>
      <key>face key</key><string>2</string>
      <key>index</key><integer>18446744073709551615</integer>
      <key>nested</key><dict><key>rectangle</key><string/></dict>
    </dict></array>
    <key>Keywords</key><array><string>4</string><string>007</string><string>5</string></array>
    <key>taken</key><date>2004-05-06T07:08:09Z</date>
    <key>hidden</key><false/>
    <key>blob</key><data>aGVsbG8=</data>
  </dict>
  <key>0</key><dict></dict>
</dict>
<key>List of Keywords</key><dict><key>4</key><string>Kids</string></dict>
</dict>)");

TEST(AlbumData, IsReadInOnePassHoweverItsMarkupIsLaidOut) {
  for (const Layout& layout : kLayouts) {
    const std::string text = document(layout, kLibrary);
    const std::string expected = textOfAlbumData(generally(text));
    // The smaller windows end inside every token in turn.
    for (std::size_t window : {1, 2, 3, 5, 7, 40, 41, 43, 47, 1 << 18}) {
      SCOPED_TRACE(std::string(layout.name) + ", window " + std::to_string(window));
      const std::optional<AlbumData> data = readPlain(text, window);
      ASSERT_TRUE(data);
      EXPECT_EQ(textOfAlbumData(*data), expected);
    }
    EXPECT_EQ(textOfAlbumData(AlbumData::fromPropertyList(generally(text))), expected)
        << layout.name;
  }
}

TEST(AlbumData, AnswersWhatAPhotoIsAskedFor) {
  const std::optional<AlbumData> data = readPlain(document(kLayouts[0], kLibrary));
  ASSERT_TRUE(data);
  EXPECT_EQ(data->photos->keys(), (std::vector<std::uint32_t>{7, 3, 0}));
  EXPECT_EQ(data->archivePath.value(), Value("/Users/a & b/iPhoto Library"));
  EXPECT_EQ(data->keywords.value().dictionary()->get("4"), Value("Kids"));

  const PhotoFacts photo = (*data->photos)[0];
  EXPECT_EQ(photo.caption()->text(), "two\nlines, 100 % \u00E9\U0001F600");
  EXPECT_EQ(photo.comments()->text(), " ");
  EXPECT_EQ(photo.rating(), -3);
  EXPECT_EQ(photo.archiveDate(), Date{398625528.5});
  EXPECT_EQ(photo.modificationDate(), Date{-1500});
  EXPECT_EQ(photo.imagePath()->folder, "/Users/a/Masters/2013/");
  EXPECT_EQ(photo.imagePath()->rest, "P1.jpg");
  EXPECT_EQ(photo.thumbnailPath()->text(), "P1.jpg");
  EXPECT_FALSE(photo.originalPath());
  EXPECT_TRUE(photo.roll().isNothing());
  std::vector<std::uint32_t> keywords;
  photo.keywords().forEachKeyNumber([&](std::uint32_t key) { keywords.push_back(key); });
  EXPECT_EQ(keywords, (std::vector<std::uint32_t>{4, 12}));
  // The second photo lies in the same folder, and that folder is kept once.
  EXPECT_EQ((*data->photos)[1].imagePath()->folder.data(), photo.imagePath()->folder.data());
}

/// A document whose one photo holds these elements.
std::string photoWith(std::string_view entries) {
  return "<plist version=\"1.0\"><dict><key>Master Image List</key><dict><key>5</key><dict>" +
         std::string(entries) + "</dict></dict></dict></plist>";
}

/// A document that holds this instead of its photos.
std::string photosAs(std::string_view entries) {
  return "<plist><dict><key>Master Image List</key><dict>" + std::string(entries) +
         "</dict></dict></plist>";
}

TEST(AlbumData, IsLeftToTheGeneralReaderWhereMarkupIsUnusual) {
  const TemporaryFolder folder;
  for (const auto& [what, document] : Rows<std::string_view, std::string>{
           {"a comment", photoWith("<!-- --><key>a</key><string>b</string>")},
           {"a CDATA section", photoWith("<key>a</key><string><![CDATA[<b>]]></string>")},
           {"a processing instruction", photoWith("<?x y?><key>a</key><string>b</string>")},
           {"an attribute", photoWith("<key>a</key><string x='y'>b</string>")},
           {"a blank in a tag", photoWith("<key >a</key><string>b</string >")},
           {"a key twice", photoWith("<key>a</key><true/><key>b</key><true/><key>a</key><false/>")},
           {"a key twice, inside",
            photoWith("<key>a</key><dict><key>b</key><true/><key>b</key><false/></dict>")},
           {"a photo twice", photosAs("<key>5</key><dict><key>a</key><true/></dict><key>3</key>"
                                      "<dict></dict><key>5</key><dict></dict>")},
           {"a list twice", photosAs("</dict><key>Master Image List</key><dict><key>5</key>"
                                     "<dict></dict>")},
           {"a key that is no plain number", photosAs("<key>05</key><dict></dict>")},
           {"a photo that is no dictionary", photosAs("<key>5</key><string/>")},
           {"another encoding", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
                                    photoWith("<key>\xE9</key><true/>")},
           {"a byte order mark", "\xEF\xBB\xBF" + photoWith("<key>a</key><true/>")},
           {"no plist around", "<dict><key>Archive Path</key><string>/a</string></dict>"},
           {"another value at the top", "<plist><array><string>a</string></array></plist>"},
           {"deep nesting",
            photoWith("<key>a</key>" + repeated("<array>", 40) + repeated("</array>", 40))}}) {
    SCOPED_TRACE(what);
    EXPECT_FALSE(readPlain(document));
    folder.write("AlbumData.xml", document);
    EXPECT_EQ(textOfAlbumData(AlbumData::read(folder / "AlbumData.xml")),
              textOfAlbumData(generally(document)));
  }
}

TEST(AlbumData, TellsAFaultInTheWordsOfTheGeneralReader) {
  const std::string whole = photoWith("<key>a</key><string>b</string>");
  const TemporaryFolder folder;
  for (const auto& [document, reason] : Rows<std::string, std::string>{
           {whole.substr(0, whole.size() - 8), "ends inside <plist> at line 1, byte 130"},
           {photoWith("<key>a</key><integer>1x</integer>"),
            "has a malformed <integer> at line 1, byte 91"},
           {photoWith("<key>a</key><string>\x01</string>"),
            "has a character that XML does not allow at line 1, byte 99"},
           {photoWith("<key>a</key><string>\xC3(</string>"),
            "has bytes that are not UTF-8 at line 1, byte 99"},
           {photoWith("<key>a</key><date>2004-13-06T07:08:09Z</date>"),
            "has a malformed <date> at line 1, byte 91"},
           {whole + "<!", "goes on after its root element at line 1, byte 138"}}) {
    folder.write("AlbumData.xml", document);
    EXPECT_EQ(exceptionOf([&] { AlbumData::read(folder / "AlbumData.xml"); }),
              "NSParseErrorException - the property list " + reason)
        << document;
  }

  std::optional<FileFailure> failure;
  EXPECT_EQ(AlbumData::read(folder / "missing.xml", &failure).photos->size(), 0U);
  EXPECT_EQ(failure.value().sentence(),
            '\'' + (folder / "missing.xml") + "' cannot be read: No such file or directory");
}

TEST(AlbumData, GoesByTheLimits) {
  const TemporaryFolder folder;
  const std::string path = folder / "AlbumData.xml";
  const std::string text =
      "<plist version=\"1.0\"><dict><key>Archive Path</key><string>/L</string></dict></plist>";
  std::ofstream(path) << text;
  Limits limits;
  limits.nesting = 0;
  EXPECT_THROW(
      {
        const Limits::Scope scope(limits);
        AlbumData::read(path);
      },
      NSException);

  limits = {};
  limits.fileSize = text.size() - 1;
  const Limits::Scope scope(limits);
  std::optional<FileFailure> failure;
  EXPECT_TRUE(AlbumData::read(path, &failure).archivePath.isNothing());
  EXPECT_EQ(failure.value().cause, FileFailure::Cause::tooLarge);
}

TEST(AlbumData, OfRealLibrariesIsPlain) {
  const fs::path files(MRZIPHOTO_REAL_FILES);
  if (!fs::exists(files)) {
    GTEST_SKIP() << "no files of real programs are here";
  }
  std::size_t read = 0;
  for (const auto& entry : fs::recursive_directory_iterator(files)) {
    const std::string name = entry.path().filename();
    if (entry.path().extension() != ".xml" || !entry.is_regular_file() ||
        name == "AlbumData2.xml") {
      continue;
    }
    const std::string text = fileBytes(entry.path());
    const std::optional<AlbumData> data = readPlain(text);
    ASSERT_TRUE(data) << entry.path();
    EXPECT_EQ(textOfAlbumData(*data), textOfAlbumData(generally(text))) << entry.path();
    EXPECT_NE(data->photos->size(), 0U) << entry.path();
    ++read;
  }
  EXPECT_NE(read, 0U);
}

}  // namespace
}  // namespace mrziphoto
