// What a question to an open library costs per key, and what it costs to take counted records from
// a plain index, in turn in the same process: look_ups LIBRARY RUNS. A line a question: its name,
// its nanoseconds a key and those of the index, medians of the runs.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <vector>

#include <MRZiPhoto/MRZiPhoto.h>

namespace {

using namespace mrziphoto;

/// As large as a record has to be that counts its users and knows its row.
class PlainRecord final : public Object {
 public:
  explicit PlainRecord(std::uint32_t row) : _row(row) {}
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] std::uint32_t row() const { return _row; }

 private:
  static const Class kClass;
  std::uint32_t _row;
};

const Class PlainRecord::kClass{"PlainRecord"};

using PlainIndex = std::vector<Ref<PlainRecord>>;

PlainIndex indexOf(const std::vector<std::uint32_t>& keys) {
  PlainIndex index(*std::max_element(keys.begin(), keys.end()) + std::size_t{1});
  std::vector<std::uint32_t> inOrder = keys;
  std::sort(inOrder.begin(), inOrder.end());
  for (const std::uint32_t key : inOrder) {
    index[key] = make<PlainRecord>(key);
  }
  return index;
}

template <class Work>
double nanosecondsOf(Work&& work) {
  timespec begin{};
  timespec end{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &begin);
  work();
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
  return static_cast<double>(end.tv_sec - begin.tv_sec) * 1e9 +
         static_cast<double>(end.tv_nsec - begin.tv_nsec);
}

double medianOf(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  return figures[figures.size() / 2];
}

/// Both answer how many records they found, which has to be all.
template <class Question, class Plain>
void compare(const char* name, std::size_t keys, int runs, Question&& question, Plain&& plain) {
  std::vector<double> asked;
  std::vector<double> taken;
  for (int run = 0; run <= runs; ++run) {
    std::size_t found = 0;
    const double first = nanosecondsOf([&] { found += question(); });
    const double second = nanosecondsOf([&] { found += plain(); });
    if (found != 2 * keys) {
      std::fprintf(stderr, "%s: found %zu of twice %zu\n", name, found, keys);
      std::exit(1);
    }
    // The first run makes what is made when it is first asked for.
    if (run > 0) {
      asked.push_back(first / static_cast<double>(keys));
      taken.push_back(second / static_cast<double>(keys));
    }
  }
  std::printf("%s %.2f %.2f\n", name, medianOf(asked), medianOf(taken));
}

void comparePhotos(const TVQiPhotoDatabase& database, int runs) {
  std::vector<std::uint32_t> numbers;
  for (const Ref<ImageRecRef>& photo : database.photos()) {
    numbers.push_back(static_cast<std::uint32_t>(*photo->plainKeyNumber()));
  }
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
  // Made in the order in which they are asked, as a host that reads them from a list has them.
  List<Key>::Items keys;
  for (const std::uint32_t number : numbers) {
    keys.push_back(Key::initWithKey(number));
  }
  const List<Key> list(std::move(keys));
  const PlainIndex index = indexOf(numbers);
  compare(
      "photosForKeys", numbers.size(), runs, [&] { return database.photosForKeys(list).size(); },
      [&] {
        PlainIndex found;
        found.reserve(list.size());
        for (const Ref<Key>& key : list) {
          found.push_back(index[static_cast<std::uint32_t>(*key->plainNumber())]);
        }
        return found.size();
      });
}

void compareRolls(const TVQiPhotoDatabase& database, int runs) {
  std::vector<Value> keys;
  for (const Ref<ImageRecRef>& roll : database.rollRecRefs()) {
    keys.push_back(roll->photoId());
  }
  std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
  std::vector<std::uint32_t> numbers;
  for (const Value& key : keys) {
    numbers.push_back(key.unsignedIntValue());
  }
  const PlainIndex index = indexOf(numbers);
  compare(
      "rollRecRefForKey", keys.size(), runs,
      [&] {
        std::size_t found = 0;
        for (const Value& key : keys) {
          found += database.rollRecRefForKey(key) ? 1 : 0;
        }
        return found;
      },
      [&] {
        std::size_t found = 0;
        for (const Value& key : keys) {
          const Ref<PlainRecord> record = index[key.unsignedIntValue()];
          found += record && record->row() != UINT32_MAX ? 1 : 0;
        }
        return found;
      });
}

}  // namespace

int main(int argc, char** argv) {
  const auto database =
      argc == 3 ? TVQiPhotoDatabase::initWithContentsOfDirectory(argv[1]) : nullptr;
  if (!database || database->photos().empty() || database->rollRecRefs().empty()) {
    return 1;
  }
  const int runs = std::atoi(argv[2]);
  comparePhotos(*database, runs);
  compareRolls(*database, runs);
  std::fflush(stdout);
  std::_Exit(0);
}
