#include <MRZiPhoto/albums/AlbumKinds.h>

#include "support/CodedLibrary.h"

namespace mrziphoto {
namespace {

using Type = CodedBlockType;

/// "name = value" for each entry, in stored order.
Texts entriesOf(const Ref<Dictionary>& dictionary) {
  Texts entries;
  for (const Dictionary::Entry& entry : *dictionary) {
    entries.push_back(std::string(entry.key.text()) + " = " + entry.value.description());
  }
  return entries;
}

CodedBuilder fileBlock(std::uint32_t number, Type type, std::u16string_view path) {
  return CodedBuilder().block(number, type, CodedBuilder().item("idFP", path));
}

/// Fields of every kind that a record has something from.
CodedBuilder fullRecord(std::int32_t key, std::int32_t roll) {
  return CodedBuilder()
      .items("idKY", key, "idRL", roll, "idDT", 1.0, "idMD", 2.0, "idAD", 3.0, "idMM", 4.0, "idCP",
             u"Köln \U0001F600", "idCM", u"comment", "idFN", u"sub/name.jpg", "idTP",
             u"2004/05/06/Thumbs/7.jpg", "idOF", u"DSC_1.JPG", "idNK", 2, "idKS",
             std::vector<std::int32_t>{2, 9, 1}, "idUD", std::string("exif"), "idNI", 3)
      .raw(fileBlock(1, Type::original, u"2004/Originals/7.jpg").bytes())
      .raw(fileBlock(2, Type::thumbnail, u"2004/Thumbs/unused.jpg").bytes())
      .block(3, Type::image,
             CodedBuilder().items("idFP", u"2004/7.jpg", "idIS", std::vector<float>{640, 480},
                                  "idRO", 90.0F, "idFS", std::int64_t{-1}, "idFO", 1.0F, "idIF", 1,
                                  "idRR", 1));
}

TEST(CodedImageRecords, PutWhatAPhotosRecordSaysIntoItsStores) {
  const CodedLibrary library(60,
                             CodedBuilder()
                                 .item("dbKW", archiveBytes(keywordStore({{"one", 1}, {"two", 2}})))
                                 .images({fullRecord(7, 5)}));
  EXPECT_EQ(library->notices(), std::vector<Notice>());
  ASSERT_EQ(library->photos().size(), 1U);
  EXPECT_TRUE(library->rollRecRefs().empty());
  const Ref<ImageRecRef> record = library->photos()[0];
  EXPECT_EQ(record->keyStringValue(), "7");
  const Ref<AttributeMgr> store = record->imageAttributes();
  EXPECT_EQ(entriesOf(store->storedDictionary())[0],
            "Modification_Date = 2001-01-01 00:00:02 +0000");
  EXPECT_EQ(record->keywords().array()->size(), 2U);
  EXPECT_EQ((*record->keywords().array())[0].object<Keyword>()->string(), "two");
  Texts attributes = entriesOf(store->attributes());
  ASSERT_EQ(attributes.size(), 8U);
  EXPECT_TRUE(attributes.back().starts_with("KeyWords = ("));
  attributes.pop_back();
  EXPECT_EQ(attributes, (Texts{"ArchiveDate = 2001-01-01 00:00:03 +0000",
                               "MetaDate = 2001-01-01 00:00:04 +0000", "Caption = Köln \U0001F600",
                               "Annotation = comment", "FileSize = 18446744073709551615",
                               "OrigFileName = DSC_1.JPG", "ImageUserData = <65786966>"}));
  EXPECT_EQ(entriesOf(record->info()->storedDictionary()),
            (Texts{"Image_Height = 480", "Image_Width = 640", "FileName = name.jpg",
                   "Rotation = 90", "Date = 2001-01-01 00:00:01 +0000"}));
  EXPECT_EQ(record->imagePath(), library.path("2004/7.jpg"));
  EXPECT_EQ(record->originalImagePath(), library.path("2004/Originals/7.jpg"));
  EXPECT_EQ(record->thumbnailPath(), library.path("2004/05/06/Thumbs/7.jpg"));
}

TEST(CodedImageRecords, PutWhatARollsRecordSaysIntoItsStores) {
  for (const std::int32_t version : {51, 25, 24}) {
    const CodedLibrary library(version, CodedBuilder().images({fullRecord(7, 0)}));
    EXPECT_TRUE(library->photos().empty());
    ASSERT_EQ(library->rollRecRefs().size(), 1U);
    const Ref<ImageRecRef> record = library->rollRecRefs()[0];
    EXPECT_EQ(record->imagePath(), library.path("2004/05/06/sub/name.jpg"));
    if (version == 24) {
      EXPECT_FALSE(record->info());
      EXPECT_TRUE(record->imageAttributes()->storedDictionary()->empty()) << "made for want of one";
      continue;
    }
    EXPECT_EQ(record->modificationDate(), Date{2});
    EXPECT_EQ(
        entriesOf(record->imageAttributes()->attributes()),
        (Texts{"ArchiveDate = 2001-01-01 00:00:03 +0000", "ModDate = 2001-01-01 00:00:02 +0000",
               "MetaDate = 2001-01-01 00:00:04 +0000", "Caption = Köln \U0001F600",
               "Annotation = comment", "OrigFileName = DSC_1.JPG"}));
    EXPECT_EQ(entriesOf(record->info()->storedDictionary()),
              (Texts{"FileName = 2004/7.jpg", "Date = 2001-01-01 00:00:01 +0000"}));
  }
}

TEST(CodedImageRecords, HoldPhotosAboveVersion24) {
  for (const std::int32_t version : {15, 24, 25, 50, 51, 150}) {
    const CodedLibrary library(version, CodedBuilder().images({codedPhoto(1), fullRecord(2, 0)}));
    EXPECT_EQ(library->photos().size(), version > 24 ? 1U : 0U) << version;
    EXPECT_EQ(library->rollRecRefs().size(), 1U) << version;
  }
}

TEST(CodedImageRecords, GoThroughOddRecordsAsThePlainOnes) {
  using Fields = CodedBuilder;
  const std::string imageA = fileBlock(1, Type::image, u"a").bytes();
  const std::string originalO = fileBlock(1, Type::original, u"o").bytes();
  const std::string thumbnail2 = fileBlock(2, Type::thumbnail, u"t").bytes();
  const std::vector<std::int32_t> keyword{1};
  struct Case {
    Fields fields;
    // Files in the library folder; empty for none. A thumbnail lies beside its image by default.
    std::string_view image, original, thumbnail;
    std::size_t keywords = 0;
  };
  const Case cases[]{
      {Fields(), "", "", ""},
      {Fields().item("idNI", 0), "", "", ""},
      {Fields().item("idNI", 1).raw(imageA), "a", "a", "Thumbs/1.jpg"},
      {Fields().item("idNI", 1).raw(originalO), "", "o", ""},
      {Fields().item("idNI", 2).raw(imageA).raw(thumbnail2), "a", "a", "t"},
      // The block behind the last one is passed, not read.
      {Fields().item("idNI", 1).raw(thumbnail2), "", "", ""},
      // Blocks that follow a second number take the place of all before.
      {Fields().item("idNI", 1).raw(imageA).item("idNI", 1).raw(originalO), "", "o", ""},
      // The type must be known before the file.
      {Fields().item("idNI", 1).block(1, Fields().item("idFP", u"x").item("idTY", 6)), "", "", ""},
      // Of an unlisted code in a block only the code is passed.
      {Fields().item("idNI", 1).block(1, Type::image, Fields().code("idZZ").item("idFP", u"a")),
       "a", "a", "Thumbs/1.jpg"},
      // A block's text reaches beyond the block, over the next field of the record.
      {Fields().item("idNI", 1).number(1).number(20).item("idTY", 4).code("idFP").number(10).item(
           "idTP", u"t"),
       "", "", "t"},
      {Fields().item("idZZ", std::string("unlisted")), "", "", ""},
      {Fields().item("idCM", std::string("odd")), "", "", ""},
      {Fields().item("idKS", keyword).item("idNK", 1), "", "", ""},
      {Fields().item("idNK", 0).item("idKS", std::string("x")), "", "", ""},
      {Fields().item("idNK", 9).item("idKS", std::string("\0\0\0\1\0\0", 6)), "", "", "", 1}};
  Fields catalogue;
  catalogue.item("dbKW", archiveBytes(keywordStore({{"one", 1}})));
  for (const Case& each : cases) {
    catalogue.images({codedPhoto(1).raw(each.fields.bytes()).item("idCP", u"after")});
  }
  const CodedLibrary library(60, catalogue);
  ASSERT_EQ(library->photos().size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const Ref<ImageRecRef> record = library->photos()[i];
    EXPECT_EQ(record->caption(), "after") << i;
    EXPECT_EQ(record->keywords().array()->size(), cases[i].keywords) << i;
    const auto in = [&](std::string_view name) {
      return name.empty() ? std::nullopt : std::optional(library.path(std::string(name)));
    };
    EXPECT_EQ(record->imagePath(), in(cases[i].image)) << i;
    EXPECT_EQ(record->originalImagePath(), in(cases[i].original)) << i;
    EXPECT_EQ(record->thumbnailPath(), in(cases[i].thumbnail)) << i;
  }
}

TEST(CodedImageRecords, AreMadeAnewAfterTheyWereLetGo) {
  const CodedLibrary library(60, CodedBuilder().images({fullRecord(7, 5), fullRecord(8, 5)}));
  const Ref<ImageRecRef> record = library->photos()[0];
  const std::string before = record->description();
  const Ref<AttributeMgr> attributes = record->imageAttributes();
  record->unload();
  EXPECT_EQ(record->description(), before);
  EXPECT_NE(record->imageAttributes(), attributes);
  EXPECT_EQ(attributes->attributeForKey(AttributeMgr::kCaption).text(), "Köln \U0001F600")
      << "what was handed out stays whole";

  const Ref<ImageRecRef> changed = library->photos()[1];
  changed->setImageAttributes(attributes);
  changed->unload();
  EXPECT_EQ(changed->imageAttributes(), attributes) << "what a host has given stays";
  EXPECT_EQ(changed->imagePath(), library.path("2004/7.jpg"));
}

TEST(CodedImageRecords, RefuseFieldsWhoseSizeDoesNotFit) {
  const auto refuse = [](const auto& fields, const auto& around) {
    for (const auto& field : fields) {
      const CodedReadKind& kind = codedReadKind(field.read);
      const std::uint32_t size = kind.requiredSize + 1;
      if (size == 1) {
        continue;
      }
      const CodedLibrary library(
          60, CodedBuilder().images({around(
                  CodedBuilder().number(field.code).number(size).raw(std::string(size, 'x')))}));
      EXPECT_FALSE(library) << fourCharacterText(field.code);
      EXPECT_EQ(library.log(), Texts{"NSInternalInconsistencyException - Unexpected datasize " +
                                     std::to_string(size) + " during " +
                                     std::string(kind.operation) + " = (null)"})
          << fourCharacterText(field.code);
    }
  };
  refuse(kCodedImageFields,
         [](const CodedBuilder& item) { return codedPhoto(1).raw(item.bytes()); });
  refuse(kCodedBlockFields,
         [](const CodedBuilder& item) { return codedPhoto(1).item("idNI", 1).block(1, item); });
}

TEST(CodedImageRecords, RefuseWhatIsNoArchiveAndWhatTheFileDoesNotHold) {
  for (const auto& [fields, logged] : Rows<CodedBuilder, std::string_view>{
           {codedPhoto(1).item("idRS", std::string("no archive")), "NSInvalidArgumentException - "},
           {codedPhoto(1).item("idRS", std::string("\4\13streamtyped\x81\xE8\3\x84", 17)),
            "NSArchiverArchiveInconsistency - "},
           {codedPhoto(1).code("idCP").number(100).raw("x"), "NSRangeException - "},
           {codedPhoto(1).item("idNI", 2).raw(fileBlock(1, Type::image, u"a").bytes()),
            "NSRangeException - "}}) {
    const CodedLibrary library(60, CodedBuilder().images({fields}));
    EXPECT_FALSE(library);
    ASSERT_EQ(library.log().size(), 1U);
    EXPECT_TRUE(library.log()[0].starts_with(logged)) << library.log()[0];
  }
}

TEST(CodedImageRecords, MayNotAllSayTheSameBytes) {
  // Each record's only block holds a text that reaches over the records behind it.
  const std::string record = codedPhoto(1)
                                 .item("idNI", 1)
                                 .number(1)
                                 .number(20)
                                 .item("idTY", static_cast<int>(Type::image))
                                 .code("idFP")
                                 .number(20'000)
                                 .bytes();
  for (const std::size_t count : {100U, 2'000U}) {
    const CodedLibrary library(
        60, CodedBuilder()
                .images(std::vector<CodedBuilder>(count, CodedBuilder().raw(record)))
                .item("dbXX", std::string(20'000, 'x')));
    EXPECT_EQ(static_cast<bool>(library), count == 100) << count;
    if (!library) {
      EXPECT_TRUE(library.log().at(0).starts_with("NSRangeException - the image data up to offset"))
          << library.log()[0];
    }
  }
}

TEST(CodedImageRecords, ThatSayNothingShareOneRecord) {
  const CodedBuilder said = CodedBuilder().item("idCP", u"r");
  const CodedLibrary library(60,
                             CodedBuilder()
                                 .images({CodedBuilder(), said, CodedBuilder().item("idTS", 1.0)})
                                 .images({CodedBuilder().item("idZZ", 1), said}));
  const List<ImageRecRef>& records = library->rollRecRefs();
  ASSERT_EQ(records.size(), 5U);
  EXPECT_EQ(records[0], records[2]);
  EXPECT_EQ(records[0], records[3]);
  EXPECT_NE(records[1], records[4]);
  EXPECT_EQ(records[0]->keyStringValue(), "0");
  EXPECT_FALSE(records[0]->caption());
}

TEST(CodedImageRecords, StandBehindEveryMarkerAsManyAsCountedLast) {
  const CodedBuilder record = CodedBuilder().item("imag", codedPhoto(1));
  const std::string three = record.bytes() + record.bytes() + record.bytes();
  const CodedLibrary library(51, CodedBuilder()
                                     .items("dbTV", std::string("no records yet"), "dbMD", 1.0,
                                            "dbXX", std::string(5, 'x'), "dbCT", 3, "dbTV", 7)
                                     .raw(three)
                                     .item("dbTV", std::string())
                                     .raw(three)
                                     .item("dbVS", 51));
  EXPECT_EQ(library->photos().size(), 6U);
}

TEST(CodedImageRecords, LieInFilesOfAnySize) {
  std::vector<CodedBuilder> records;
  for (std::int32_t key = 1; key <= 400; ++key) {
    const std::string block(static_cast<std::size_t>(key % 100 == 0 ? 300'000 : key * 7), 'x');
    records.push_back(fullRecord(key, 5).item("idUD", block).item("idXF", block));
  }
  const CodedLibrary library(60, CodedBuilder()
                                     .images(records)
                                     .item("dbXX", std::string(300'000, 'x'))
                                     .images({fullRecord(401, 5)}));
  ASSERT_TRUE(library);
  ASSERT_EQ(library->photos().size(), 401U);
  for (std::int32_t key = 1; key <= 400; ++key) {
    const Ref<ImageRecRef> photo = library->photos()[static_cast<std::size_t>(key - 1)];
    EXPECT_EQ(photo->plainKeyNumber(), key);
    EXPECT_EQ(photo->caption(), "Köln \U0001F600");
    EXPECT_EQ(photo->imageAttributes()->imageUserData().data()->size(),
              key % 100 == 0 ? 300'000U : static_cast<std::size_t>(key * 7));
    EXPECT_EQ(photo->imagePath(), library.path("2004/7.jpg"));
  }
}

TEST(CodedImageRecords, HaveTheKeywordsOfTheStoreBeforeThem) {
  const CodedBuilder record =
      codedPhoto(1).item("idNK", 1).item("idKS", std::vector<std::int32_t>{1});
  const CodedBuilder sections = CodedBuilder()
                                    .images({record})
                                    .item("dbKW", archiveBytes(keywordStore({{"new", 1}})))
                                    .images({record})
                                    .item("dbKW", archiveBytes(make<Array>()))
                                    .images({record});
  const CodedLibrary library(catalogueBytes(50, sections, keywordStore({{"old", 1}})));
  std::string found;
  for (const Ref<ImageRecRef>& each : library->photos()) {
    const Ref<Array> keywords = each->keywords().array();
    found += keywords->empty() ? "none" : *(*keywords)[0].object<Keyword>()->string() + " ";
  }
  EXPECT_EQ(found, "old new none");
}

/// Asks every record of a catalogue that can be loaded for everything. A catalogue that cannot be
/// loaded must leave one line that says why.
bool isLibraryOrRefusal(const TemporaryFolder& folder, const std::string& bytes) {
  // Some file systems write a file that is made anew over an old one to the disk at once.
  fs::remove(folder / "Library.iPhoto");
  folder.write("Library.iPhoto", bytes);
  const CollectedLog log;
  const Ref<TVQiPhotoLibrary> library =
      TVQiPhotoLibrary::initWithContentsOfFile(folder / "Library.iPhoto");
  if (!library) {
    return !log.lines().empty();
  }
  std::size_t described = 0;
  for (const List<ImageRecRef>& records : {library->photos(), library->rollRecRefs()}) {
    for (const Ref<ImageRecRef>& record : records) {
      described += record->description().size();
    }
  }
  return described >= library->photos().size() && !library->description().empty();
}

TEST(CodedCatalogue, IsReadOrRefusedWhateverIsDamaged) {
  const TemporaryFolder files;
  const std::string albums =
      albumArchive({Album::init<ArchiveAlbum>(), Album::init<FolderAlbum>(), 0});
  const CodedBuilder roll =
      CodedBuilder().items("stKY", 5, "rlNM", u"roll", "stPK", std::vector<std::int32_t>{1, 2});
  const CodedBuilder sections = CodedBuilder()
                                    .images({fullRecord(1, 5), fullRecord(2, 0)})
                                    .item("dbAL", albums)
                                    .rolls({roll});
  for (const std::string& whole :
       {catalogueBytes(60, sections),
        catalogueBytes(25, sections, keywordStore({{"one", 1}}), std::endian::big)}) {
    ASSERT_TRUE(isLibraryOrRefusal(files, whole));
    for (std::size_t i = 0; i < whole.size(); ++i) {
      // Shorter than a code, a file is no catalogue at all, which the probe says by throwing.
      EXPECT_TRUE(i < 4 || isLibraryOrRefusal(files, whole.substr(0, i))) << i;
      std::string flipped = whole;
      flipped[i] = static_cast<char>(~flipped[i]);
      EXPECT_TRUE(isLibraryOrRefusal(files, flipped)) << i;
    }
  }
}

}  // namespace
}  // namespace mrziphoto
