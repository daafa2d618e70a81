#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <MRZiPhoto/archive/NSArchiver.h>
#include <MRZiPhoto/archive/NSUnarchiver.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/Dictionary.h>
#include <MRZiPhoto/values/Limits.h>
#include <MRZiPhoto/values/NSException.h>

#include "CollectedLog.h"
#include "TemporaryFolder.h"

// What nearly every test uses.
namespace mrziphoto {

namespace fs = std::filesystem;

/// The rows of a table; each begins with what goes in.
template <class... Cells>
using Rows = std::vector<std::tuple<Cells...>>;
using Texts = std::vector<std::string>;
using Entries = std::initializer_list<std::pair<std::string_view, Value>>;

inline Ref<Array> list(std::vector<Value> values) { return make<Array>(std::move(values)); }
inline Ref<Dictionary> dictionary(Entries entries) { return make<Dictionary>(entries); }

/// An archive of these objects, one behind the other.
template <class... Values>
std::string archiveBytes(const Values&... objects) {
  NSArchiver archiver;
  (archiver.encodeObject(objects), ...);
  return std::string(archiver.archivedData().bytes());
}

/// The object after a way through an archive.
inline Value throughArchive(const Value& object) {
  return NSUnarchiver::initForReadingWithData(Data::copyOf(archiveBytes(object)))->decodeObject();
}

/// "name - reason" of what `use` throws; empty when it throws nothing.
template <class Use>
std::string exceptionOf(const Use& use) {
  try {
    use();
  } catch (const NSException& exception) {
    return exception.name() + " - " + exception.reason();
  }
  return {};
}

inline bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

/// The text with one word for another wherever it stands.
inline std::string replaced(std::string text, std::string_view word, std::string_view by) {
  for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += by.size()) {
    text.replace(at, word.size(), by);
  }
  return text;
}

inline std::string repeated(std::string_view text, std::size_t times) {
  std::string result;
  for (; times > 0; --times) {
    result += text;
  }
  return result;
}

}  // namespace mrziphoto
