#include "Library.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <iterator>
#include <system_error>
#include <unistd.h>
#include <unordered_set>

#include <MRZiPhoto/database/Opening.h>
#include <MRZiPhoto/files/FileFailure.h>
#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/detail/Text.h>

#include "../output/ComposedText.h"
#include "../output/Failure.h"
#include "../output/Progress.h"
#include "../output/Values.h"

namespace mrziphoto::tool {
namespace {

std::string quoted(const std::string& text) { return '\'' + text + '\''; }

[[noreturn]] void failToFind(const TVQiPhotoDatabase& database, const std::string& what) {
  throw Failure(ExitStatus::notThere,
                fmt::format("the library '{}' has no {}", database.directory(), what));
}

/// The number of a KEY; nothing for one that is larger than any key.
std::optional<std::uint32_t> keyFromText(std::string_view text) {
  std::uint32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

bool hasKey(const Value& key, std::uint32_t number) { return numberOfKey(key).integer() == number; }

/// True when there is a text that reads so, whatever its Unicode form; `composed` is composed.
bool reads(const std::optional<std::string>& text, const std::string& composed) {
  return text && composedText(*text) == composed;
}

using AlbumTest = std::function<bool(const Album& album)>;

/// The first album that passes, those inside others included. Albums that stand in several places
/// are looked at once.
Ref<Album> findAlbum(const List<Album>& albums, const AlbumTest& passes,
                     std::unordered_set<const Album*>& seen) {
  for (const Ref<Album>& album : albums) {
    if (!seen.insert(album.get()).second) {
      continue;
    }
    if (passes(*album)) {
      return album;
    }
    if (Ref<Album> inside = findAlbum(album->children(), passes, seen)) {
      return inside;
    }
  }
  return {};
}

Ref<Album> findAlbum(const TVQiPhotoDatabase& database, const AlbumTest& passes) {
  std::unordered_set<const Album*> seen;
  return findAlbum(database.albums(), passes, seen);
}

Ref<Album> albumNamed(const TVQiPhotoDatabase& database, const std::string& word) {
  Ref<Album> found;
  if (const auto number = isKeyText(word) ? keyFromText(word) : std::nullopt) {
    found = findAlbum(database, [&](const Album& album) { return hasKey(album.key(), *number); });
  }
  if (!found) {
    found = findAlbum(database, [&](const Album& album) { return album.albumName() == word; });
  }
  if (!found) {
    found = findAlbum(database, [&, name = composedText(word)](const Album& album) {
      return reads(album.albumName(), name);
    });
  }
  if (!found) {
    failToFind(database, "album " + quoted(word));
  }
  return found;
}

Ref<Album> rollWithKey(const TVQiPhotoDatabase& database, const std::string& word) {
  if (const std::optional<std::uint32_t> number = keyFromText(word)) {
    for (const Ref<RollAlbum>& roll : database.rolls()) {
      if (hasKey(roll->key(), *number)) {
        return roll;
      }
    }
  }
  failToFind(database, "roll with the key " + word);
}

/// Those of the photos that the album lists, in its order.
List<ImageRecRef> photosInAlbum(const TVQiPhotoDatabase& database, const Album& album) {
  const Ref<KeyMgr> keys = album.photoKeys();
  return keys ? database.photosForKeys(keys->imageKeys()) : List<ImageRecRef>();
}

List<ImageRecRef> photosThat(const List<ImageRecRef>& photos,
                             const std::function<bool(const ImageRecRef& photo)>& pass) {
  List<ImageRecRef>::Items kept;
  std::ranges::copy_if(photos, std::back_inserter(kept),
                       [&](const Ref<ImageRecRef>& photo) { return pass(*photo); });
  return List<ImageRecRef>(std::move(kept));
}

/// True for a photo that bears the keyword; `text` is composed.
bool isTagged(const ImageRecRef& photo, const std::string& text) {
  const Ref<Array> keywords = photo.keywords().array();
  return keywords && std::ranges::any_of(*keywords, [&](const Value& keyword) {
           return reads(keywordText(keyword), text);
         });
}

/// True when the library lists the keyword, or one of its photos bears it all the same.
bool isKeyword(const TVQiPhotoDatabase& database, const std::string& text) {
  return std::ranges::any_of(
             database.keywords(),
             [&](const auto& keyword) { return reads(keyword->keyword(), text); }) ||
         std::ranges::any_of(database.photos(),
                             [&](const auto& photo) { return isTagged(*photo, text); });
}

/// Says that a large library is being opened, which takes a while.
void announce(const std::string& folder) {
  constexpr std::uint64_t kLarge = std::uint64_t{256} * 1024 * 1024;
  const std::optional<std::uint64_t> size = FileManager::size(path::join(folder, "AlbumData.xml"));
  if (Terminal::at(STDERR_FILENO).isThere && size.value_or(0) >= kLarge) {
    Progress::note("Opening " + folder + " ...");
  }
}

}  // namespace

bool isKeyText(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, text::isDigit);
}

void expectKeyText(const std::string& text) {
  if (!isKeyText(text)) {
    throw Failure(ExitStatus::wrongUse, quoted(text) + " is no key, which is a decimal number");
  }
}

std::string libraryFolder(const Arguments& arguments) {
  const std::optional<std::string>& named = arguments.library;
  if (!named) {
    return TVQiPhotoDatabase::defaultDirectory();
  }
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::absolute(*named, error);
  // There is no absolute path in a working folder that has gone.
  return error ? *named : folder.string();
}

const TVQiPhotoDatabase& openLibrary(Session& session) {
  const std::string folder = libraryFolder(session.arguments);
  const std::optional<FileFailure> obstacle = FileManager::obstacle(folder);
  if (obstacle && obstacle->cause == FileFailure::Cause::notThere) {
    throw Failure(ExitStatus::notThere, "there is no folder " + quoted(folder));
  }
  if (!obstacle && !FileManager::isFolder(folder)) {
    throw Failure(ExitStatus::notThere, quoted(folder) + " is no folder");
  }
  announce(folder);
  OpeningFailure failure;
  session.database = TVQiPhotoDatabase::initWithContentsOfDirectory(
      folder, {.limits = {}, .stayInside = session.arguments.stayInside}, &failure);
  if (!session.database) {
    throw Failure(ExitStatus::notThere,
                  fmt::format("the library '{}' cannot be opened: {}", folder, failure.sentence()));
  }
  if (!session.arguments.strict) {
    expectPhotos(session);
  }
  return *session.database;
}

void expectPhotos(Session& session) {
  const Ref<TVQiPhotoDatabase> database = session.database;
  if (const std::optional<OpeningFailure>& failure = database->photosFailure()) {
    session.database = nullptr;  // its notices would tell the same
    throw Failure(ExitStatus::notThere,
                  fmt::format("the photos of the library '{}' cannot be read: {}",
                              database->directory(), failure->sentence()));
  }
}

Ref<ImageRecRef> photoWithKey(const TVQiPhotoDatabase& database, const std::string& key) {
  if (const std::optional<std::uint32_t> number = keyFromText(key)) {
    if (Ref<ImageRecRef> found = database.photoForKey(Key::initWithKey(*number))) {
      return found;
    }
    // A key that holds more than its number equals no key that is made from one.
    for (const Ref<ImageRecRef>& photo : database.photos()) {
      if (!photo->plainKeyNumber() && hasKey(photo->key(), *number)) {
        return photo;
      }
    }
  }
  failToFind(database, "photo with the key " + key);
}

List<ImageRecRef> selectPhotos(const TVQiPhotoDatabase& database, const Arguments& arguments) {
  List<ImageRecRef> photos = database.photos();
  if (arguments.album) {
    photos = photosInAlbum(database, *albumNamed(database, *arguments.album));
  }
  if (arguments.roll) {
    const List<ImageRecRef> inRoll =
        photosInAlbum(database, *rollWithKey(database, *arguments.roll));
    if (arguments.album) {
      std::unordered_set<const ImageRecRef*> members;
      for (const Ref<ImageRecRef>& photo : inRoll) {
        members.insert(photo.get());
      }
      photos =
          photosThat(photos, [&](const ImageRecRef& photo) { return members.contains(&photo); });
    } else {
      photos = inRoll;
    }
  }
  if (arguments.keyword) {
    const std::string text = composedText(*arguments.keyword);
    photos = photosThat(photos, [&](const ImageRecRef& photo) { return isTagged(photo, text); });
    if (photos.empty() && !isKeyword(database, text)) {
      failToFind(database, "keyword " + quoted(*arguments.keyword));
    }
  }
  return photos;
}

}  // namespace mrziphoto::tool
