#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/detail/OwnFile.h>
#include <MRZiPhoto/resources/Bundle.h>
#include <MRZiPhoto/resources/TVQiPhotoFramework.h>
#include <MRZiPhoto/resources/detail/StringTable.h>
#include <MRZiPhoto/resources/detail/UserDefaults.h>

#include "support/EnvironmentVariable.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

TEST(StringTable, ReadsKeysTextsAndComments) {
  const auto table = detail::stringTableFromBytes(
      "\xEF\xBB\xBF/* \"no\" = \"comment\"; */ \"a\"=\"1\";\n// \"b\" = \"2\";\n"
      "\"quote \\\" \\\\ \\n\" = \"\\U00e9 \\Ud83d\\Udcf7 \\Ud83d! \\q\";\n\"a\" = \"K\u00F6ln\" "
      ";");
  ASSERT_TRUE(table);
  EXPECT_EQ(table->size(), 2U);
  EXPECT_EQ(table->at("a"), "Köln") << "the later text stands";
  EXPECT_EQ(table->at("quote \" \\ \n"), "é \U0001F4F7 \uFFFD! q");

  const std::string_view utf16("\xFF\xFE\"\0a\0\"\0=\0\"\0\xF6\0\"\0;\0", 18);
  EXPECT_EQ(detail::stringTableFromBytes(utf16)->at("a"), "ö");
  EXPECT_TRUE(detail::stringTableFromBytes("")->empty());
}

TEST(StringTable, RefusesEveryCutOffTable) {
  const std::string whole = "/* c */ \"k\\\"\" = \"v\\U00e9\"; // end";
  const std::size_t afterComment = whole.find('"');
  const std::size_t afterEntry = whole.find(';') + 1;
  for (std::size_t size = 1; size < whole.size(); ++size) {
    const bool isWhole = (size >= afterComment - 1 && size <= afterComment) ||
                         (size >= afterEntry && size != afterEntry + 2);
    EXPECT_EQ(detail::stringTableFromBytes(whole.substr(0, size)).has_value(), isWhole) << size;
  }
}

TEST(Bundle, AnswersInTheUsersLanguageElseInEnglish) {
  const TemporaryFolder folder;
  folder.write("en.lproj/T.strings", "\"a\" = \"english a\"; \"b\" = \"english b\";");
  folder.write("de.lproj/T.strings", "\"a\" = \"deutsch a\";");
  folder.write("de.lproj/Broken.strings", "\"a\" = ");
  const EnvironmentVariable all("LC_ALL", std::nullopt);
  const EnvironmentVariable lang("LANG", "en_GB.UTF-8");
  for (const auto& [locale, a, b] :
       Rows<const char*, const char*, const char*>{{"de_DE.UTF-8", "deutsch a", "english b"},
                                                   {"de", "deutsch a", "english b"},
                                                   {"fr_FR", "english a", "english b"},
                                                   {"C", "english a", "english b"},
                                                   {"../de", "english a", "english b"},
                                                   {"", "english a", "english b"}}) {
    const EnvironmentVariable messages("LC_MESSAGES", locale);
    const Ref<Bundle> bundle = Bundle::withPath(folder.path());
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->localizedStringForKey("a", "T"), a) << locale;
    EXPECT_EQ(bundle->localizedStringForKey("b", "T"), b) << locale;
    EXPECT_EQ(bundle->localizedStringForKey("c", "T"), "c");
    EXPECT_EQ(bundle->localizedStringForKey("a", "Missing"), "a");
  }
  const EnvironmentVariable german("LC_ALL", "de_AT");
  const CollectedLog log;
  const Bundle bundle(folder.path());
  EXPECT_EQ(bundle.localizedStringForKey("a", "Broken"), "a");
  EXPECT_EQ(bundle.localizedStringForKey("b", "Broken"), "b");
  EXPECT_EQ(log.lines(), Texts{"'" + folder / "de.lproj/Broken.strings" + "' is no string table"});
}

TEST(Bundle, AnswersItsInformation) {
  const TemporaryFolder folder;
  EXPECT_FALSE(Bundle::withPath(folder / "missing"));
  folder.write(
      "app/Contents/Info.plist",
      "<plist><dict><key>CFBundleShortVersionString</key><string>9.4.3</string></dict></plist>");
  folder.write("flat/Info.plist", "<dict><key>a</key><integer>1</integer></dict>");
  folder.write("broken/Info.plist", "<dict><key>");
  EXPECT_EQ(Bundle::withPath(folder / "app")->infoDictionaryValue("CFBundleShortVersionString"),
            "9.4.3");
  EXPECT_EQ(Bundle::withPath(folder / "flat")->infoDictionaryValue("a"), 1);
  EXPECT_TRUE(Bundle::withPath(folder / "app")->infoDictionaryValue("other").isNothing());
  const CollectedLog log;
  EXPECT_TRUE(Bundle::withPath(folder / "broken")->infoDictionaryValue("a").isNothing());
  EXPECT_EQ(log.lines().size(), 1U);
  EXPECT_TRUE(Bundle::withPath(folder.path())->infoDictionaryValue("a").isNothing());
}

TEST(TVQiPhotoFramework, EveryLanguageHasTheSameTexts) {
  const fs::path resources = TVQiPhotoFramework::bundle()->path();
  ASSERT_TRUE(fs::is_directory(resources)) << resources;
  const auto read = [&](const char* language, const fs::path& name) {
    const auto bytes = FileManager::contents((resources / language / name).string());
    const auto table = bytes ? detail::stringTableFromBytes(bytes->bytes()) : std::nullopt;
    EXPECT_TRUE(table) << language << name;
    std::set<std::string> keys;
    for (const auto& [key, text] : table.value_or(detail::StringTable())) {
      EXPECT_EQ(key.find("%d") == std::string::npos, text.find("%d") == std::string::npos) << key;
      keys.insert(key);
    }
    return keys;
  };
  int tables = 0;
  for (const auto& file : fs::directory_iterator(resources / "en.lproj")) {
    const auto name = file.path().filename();
    EXPECT_EQ(read("en.lproj", name), read("de.lproj", name)) << name;
    ++tables;
  }
  EXPECT_EQ(tables, 5);
}

// Loaded by a path that is relative to a folder which the host then leaves.
TEST(TVQiPhotoFramework, FindsItsResourcesFromWhereItWasLoaded) {
  if (std::string_view(MRZIPHOTO_LIBRARY).empty()) {
    GTEST_SKIP() << "The library is built static.";
  }
  const fs::path library = fs::canonical(MRZIPHOTO_LIBRARY);
  const fs::path resources =
      library.parent_path().parent_path() / "share" / "MRZiPhoto" / "resources";
  for (const auto& [named, expected] : {std::pair<const char*, fs::path>{nullptr, resources},
                                        {"own", library.parent_path() / "own"}}) {
    const EnvironmentVariable variable("MRZIPHOTO_RESOURCES",
                                       named ? std::optional<std::string>(named) : std::nullopt);
    const pid_t process = fork();
    if (process == 0) {
      fs::current_path(library.parent_path());
      void* const loaded = dlopen(("./" + library.filename().string()).c_str(), RTLD_NOW);
      fs::current_path("/");
      void* const bundle =
          loaded ? dlsym(loaded, "_ZN9mrziphoto18TVQiPhotoFramework6bundleEv") : nullptr;
      const bool isFound =
          bundle != nullptr && reinterpret_cast<Ref<Bundle> (*)()>(bundle)()->path() == expected;
      std::_Exit(isFound ? 0 : 1);
    }
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << expected;
  }
  EXPECT_EQ(detail::ownFile(), fs::canonical("/proc/self/exe"));
}

TEST(UserDefaults, HostStandsBeforeTheEnvironment) {
  const std::string name = "MRZiPhotoTestDefault";
  for (const auto& [text, truth] : Rows<const char*, bool>{{"YES", true},
                                                           {"yes", true},
                                                           {"true", true},
                                                           {"1", true},
                                                           {" -0042", true},
                                                           {"t", true},
                                                           {"NO", false},
                                                           {"false", false},
                                                           {"0", false},
                                                           {"", false},
                                                           {"00", false},
                                                           {"on", false},
                                                           {"0.5", false}}) {
    const EnvironmentVariable variable(name, text);
    EXPECT_EQ(UserDefaults::boolForKey(name), truth) << text;
    UserDefaults::setBoolForKey(!truth, name);
    EXPECT_EQ(UserDefaults::boolForKey(name), !truth) << text;
    UserDefaults::removeObjectForKey(name);
  }
  EXPECT_FALSE(UserDefaults::boolForKey(name));
}

}  // namespace
}  // namespace mrziphoto
