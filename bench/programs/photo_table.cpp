// Reads album data into the photo table and, asked to, lists its photos straight from the rows as
// `mrziphoto photos --format jsonl` does of a library whose photos have no stores beside them.
// Says on the error output what each cost.

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>
#include <unordered_map>
#include <vector>

#include <MRZiPhoto/albumdata/detail/AlbumData.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/photos/detail/PhotoFolder.h>
#include <MRZiPhoto/table/detail/PhotoFacts.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/Dictionary.h>

#include "tool/output/JsonText.h"

namespace mrziphoto {
namespace {

using namespace std::string_view_literals;

double processorSeconds() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

long peakKilobytes() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

std::string escaped(std::string_view text) {
  std::string quoted;
  tool::JsonText::appendQuoted(quoted, text);
  return quoted.substr(1, quoted.size() - 2);
}

class Listing {
 public:
  Listing(const AlbumData& data, std::string folder)
      : _table(*data.photos), _folders(_table.folderCount()), _archivePath(std::move(folder)) {
    if (const auto recorded = data.archivePath.text()) {
      _lastArchivePath = recorded->text();
    }
    if (const Ref<Dictionary> keywords = data.keywords.value().dictionary()) {
      for (const Dictionary::Entry& entry : *keywords) {
        const std::uint32_t key = Value(entry.key.text()).unsignedIntValue();
        if (_keywords.size() <= key) {
          _keywords.resize(key + 1);
        }
        tool::JsonText::appendQuoted(_keywords[key], entry.value.text().value_or(""));
      }
    }
  }

  void write() {
    _out.reserve(2 * kPiece);
    for (std::uint32_t row = 0; row < _table.size(); ++row) {
      photo(PhotoSheet(_table[row]));
      if (_out.size() >= kPiece) {
        flush();
      }
    }
    flush();
  }

 private:
  static constexpr std::size_t kPiece = std::size_t{1} << 16;

  /// What is worked out once for all photos of a folder, ready to be written.
  struct Folder {
    std::string now;        // where it lies
    std::string path;       // the same, escaped
    std::string originals;  // the folder of its originals by custom, escaped
  };

  void flush() {
    std::string_view rest = _out;
    while (!rest.empty()) {
      const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
      if (written <= 0) {
        std::exit(1);
      }
      rest.remove_prefix(static_cast<std::size_t>(written));
    }
    _out.clear();
  }

  void number(std::int64_t number) {
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    _out.append(digits.data(), end);
  }

  void quoted(std::string_view text) {
    const bool isPlain = std::ranges::all_of(text, [](char each) {
      const auto byte = static_cast<unsigned char>(each);
      return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\';
    });
    if (!isPlain) {
      tool::JsonText::appendQuoted(_out, text);
      return;
    }
    _out += '"';
    _out += text;
    _out += '"';
  }

  void text(const std::optional<FactText>& text) {
    if (!text) {
      _out += "null";
    } else if (text->folder.empty()) {
      quoted(text->rest);
    } else {
      quoted(text->text());
    }
  }

  static void twoDigits(char* to, unsigned number) {
    to[0] = static_cast<char>('0' + number / 10);
    to[1] = static_cast<char>('0' + number % 10);
  }

  void date(const std::optional<Date>& date) {
    if (!date) {
      _out += "null";
      return;
    }
    const double seconds = date->secondsSinceReferenceDate;
    constexpr double kFurthest = 6e10;
    if (!(std::fabs(seconds) < kFurthest) || seconds != std::floor(seconds)) {
      const std::optional<std::string> text = date->iso8601();
      _out += text ? '"' + *text + '"' : "null";
      return;
    }
    constexpr std::int64_t kDay = 86400;
    const auto whole = static_cast<std::int64_t>(seconds);
    const std::int64_t day = whole >= 0 ? whole / kDay : -((kDay - 1 - whole) / kDay);
    const auto rest = static_cast<unsigned>(whole - day * kDay);
    constexpr std::chrono::sys_days kReferenceDate{std::chrono::year{2001} / 1 / 1};
    const std::chrono::year_month_day calendar{kReferenceDate +
                                               std::chrono::days{static_cast<int>(day)}};
    const auto year = static_cast<unsigned>(static_cast<int>(calendar.year()));
    std::string_view form = "\"yyyy-mm-ddThh:mm:ssZ\"";
    std::array<char, 22> text;
    form.copy(text.data(), text.size());
    twoDigits(&text[1], year / 100);
    twoDigits(&text[3], year % 100);
    twoDigits(&text[6], static_cast<unsigned>(calendar.month()));
    twoDigits(&text[9], static_cast<unsigned>(calendar.day()));
    twoDigits(&text[12], rest / 3600);
    twoDigits(&text[15], rest / 60 % 60);
    twoDigits(&text[18], rest % 60);
    _out.append(text.data(), text.size());
  }

  [[nodiscard]] std::string updated(const std::string& path) const {
    return !_lastArchivePath.empty() && _lastArchivePath != _archivePath &&
                   path.starts_with(_lastArchivePath)
               ? _archivePath + path.substr(_lastArchivePath.size())
               : path;
  }

  Folder& folderOf(const FactText& path, std::uint64_t number) {
    Folder& folder = _folders[number];
    if (folder.now.empty()) {
      folder.now = updated(std::string(path.folder));
      folder.path = escaped(folder.now);
    }
    return folder;
  }

  const std::string& originalsOf(Folder& folder) {
    if (folder.originals.empty()) {
      const std::string path = path::withoutLastComponent(folder.now + "x");
      Ref<PhotoFolder>& around = _around[path::withoutLastComponent(path)];
      if (!around) {
        around = make<PhotoFolder>(path::withoutLastComponent(path));
      }
      const PhotoFolder onDisk(path, around.get());
      folder.originals = escaped(path::join(onDisk.path(), "Originals") + "/");
    }
    return folder.originals;
  }

  /// Writes a path and answers its folder; nullptr for a path without one.
  Folder* path(const Fact& fact) {
    const std::optional<FactText> parts = fact.text();
    if (!parts) {
      _out += "null";
      return nullptr;
    }
    if (fact.kind() != FactKind::path || parts->folder.size() < _lastArchivePath.size()) {
      quoted(updated(parts->text()));
      return nullptr;
    }
    const char* at = fact.payload();
    Folder& folder = folderOf(*parts, facts::readNumber(at));
    _out += '"';
    _out += folder.path;
    // A folder ends with a slash, whose place the quotation mark of the rest takes for a moment.
    _out.pop_back();
    const std::size_t slash = _out.size();
    quoted(parts->rest);
    _out[slash] = '/';
    return &folder;
  }

  void photo(const PhotoSheet& photo) {
    _out += "{\"key\":";
    number(photo.key());
    _out += ",\"rollKey\":";
    if (const auto roll = photo.roll().integer()) {
      number(*roll);
    } else {
      _out += "null";
    }
    _out += ",\"date\":";
    date(photo.date());
    _out += ",\"archiveDate\":";
    date(photo.archiveDate());
    _out += ",\"modificationDate\":";
    date(photo.modificationDate());
    _out += ",\"caption\":";
    text(photo.caption());
    _out += ",\"comments\":";
    text(photo.comments());
    _out += ",\"keywords\":[";
    photo.keywords().forEachKeyNumber([this](std::uint32_t key) {
      if (key < _keywords.size() && !_keywords[key].empty()) {
        if (_out.back() != '[') {
          _out += ',';
        }
        _out += _keywords[key];
      }
    });
    _out += "],\"imagePath\":";
    Folder* folder = path(photo[PhotoField::imagePath]);
    _out += ",\"originalImagePath\":";
    if (folder != nullptr) {
      _out += '"';
      _out += originalsOf(*folder);
      number(photo.key());
      _out += ".?origExt?\"";
    } else {
      _out += "null";
    }
    _out += ",\"thumbnailPath\":";
    path(photo[PhotoField::thumbPath]);
    _out += ",\"originalFilename\":";
    std::optional<FactText> original = photo.originalPath();
    original = original ? original : photo.imagePath();
    if (original) {
      quoted(original->rest.substr(original->rest.rfind('/') + 1));
    } else {
      _out += "null";
    }
    _out += folder != nullptr ? ",\"hasBeenEdited\":true}\n" : ",\"hasBeenEdited\":false}\n";
  }

  const PhotoTable& _table;
  std::vector<Folder> _folders;
  std::unordered_map<std::string, Ref<PhotoFolder>> _around;
  std::vector<std::string> _keywords;
  std::string _archivePath;
  std::string _lastArchivePath;
  std::string _out;
};

}  // namespace
}  // namespace mrziphoto

int main(int argc, char** argv) {
  using namespace mrziphoto;
  if (argc < 2) {
    return 1;
  }
  const double begun = processorSeconds();
  const AlbumData data = AlbumData::read(argv[1]);
  const double filled = processorSeconds();
  std::fprintf(stderr, "%zu photos, %.3f s, peak %ld KB\n", data.photos->size(), filled - begun,
               peakKilobytes());
  if (argc > 2) {
    Listing(data, path::withoutLastComponent(argv[1])).write();
    const double cost = processorSeconds() - filled;
    std::fprintf(stderr, "listed in %.3f s, %.0f photos a second, peak %ld KB\n", cost,
                 static_cast<double>(data.photos->size()) / cost, peakKilobytes());
  }
  // As the tool does, it leaves without taking the table apart.
  std::_Exit(0);
}
