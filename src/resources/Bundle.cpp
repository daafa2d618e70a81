#include "Bundle.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../propertylist/PropertyList.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "detail/StringTable.h"

namespace mrziphoto {
namespace {

constexpr std::string_view kEnglish = "en";
constexpr std::array kInfoFiles{"Contents/Info.plist", "Info.plist"};

/// The user's language, "de" for "de_DE.UTF-8"; English where the environment names none.
std::string userLanguage() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') {
      continue;
    }
    const std::string_view locale = value;
    const std::string_view language = locale.substr(0, locale.find_first_of("_.@"));
    // The word becomes part of a path. "C" and "POSIX" are no languages.
    const bool isLanguage =
        (language.size() == 2 || language.size() == 3) &&
        std::ranges::all_of(language, [](char each) { return each >= 'a' && each <= 'z'; });
    return std::string(isLanguage ? language : kEnglish);
  }
  return std::string(kEnglish);
}

}  // namespace

const Class Bundle::kClass{"NSBundle"};

Ref<Bundle> Bundle::withPath(const std::string& folder) {
  return FileManager::isFolder(folder) ? make<Bundle>(folder) : nullptr;
}

Value Bundle::infoDictionaryValue(std::string_view key) const {
  const std::lock_guard lock(_mutex);
  if (!_infoAttempted) {
    _infoAttempted = true;
    _info = readInfoDictionary();
  }
  return _info ? _info->get(key) : Value();
}

std::string Bundle::localizedStringForKey(std::string_view key, std::string_view table) const {
  const std::lock_guard lock(_mutex);
  auto found = _tables.find(table);
  if (found == _tables.end()) {
    const std::string name(table);
    found = _tables.emplace(name, readTable(name)).first;
  }
  const auto text = found->second.find(std::string(key));
  return text != found->second.end() ? text->second : std::string(key);
}

std::string Bundle::description() const { return "Bundle <" + _folder + ">"; }

Ref<Dictionary> Bundle::readInfoDictionary() const {
  for (const char* name : kInfoFiles) {
    const std::string file = path::join(_folder, name);
    const std::optional<Data> bytes = FileManager::contents(file);
    if (!bytes) {
      continue;
    }
    try {
      return propertyListFromData(*bytes).dictionary();
    } catch (const NSException& exception) {
      log("'%@' cannot be read: %@", file, exception.reason());
    }
  }
  return nullptr;
}

Bundle::Texts Bundle::readTable(const std::string& name) const {
  Texts texts;
  // The later language wins where both have a text.
  for (const std::string& language : {std::string(kEnglish), userLanguage()}) {
    const std::string file =
        path::join(_folder, path::join(language + ".lproj", path::withExtension(name, "strings")));
    const std::optional<Data> bytes = FileManager::contents(file);
    if (!bytes) {
      continue;
    }
    std::optional<Texts> read = detail::stringTableFromBytes(bytes->bytes());
    if (!read) {
      log("'%@' is no string table", file);
      continue;
    }
    read->merge(texts);
    texts = std::move(*read);
  }
  return texts;
}

}  // namespace mrziphoto
