// What a question to an open library costs, per key, as the library grows.

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/values/Log.h>

#include "sample/SampleLibrary.h"

namespace mrziphoto {
namespace {

constexpr std::int32_t kVersion = 60;

/// The folder for made-up libraries; they are written once and kept for the next run.
std::filesystem::path librariesFolder() {
  const char* named = std::getenv("MRZIPHOTO_BENCH_FOLDER");
  return named != nullptr ? std::filesystem::path(named)
                          : std::filesystem::temp_directory_path() / "mrziphoto-bench";
}

/// An open library of that many photos. The catalogue file alone is read.
Ref<TVQiPhotoDatabase> libraryOf(std::int64_t photos) {
  static std::map<std::int64_t, Ref<TVQiPhotoDatabase>> open;
  Ref<TVQiPhotoDatabase>& database = open[photos];
  if (!database) {
    const std::filesystem::path folder = librariesFolder() / ("coded-" + std::to_string(photos));
    const std::filesystem::path complete = folder.string() + ".complete";
    if (!std::filesystem::exists(complete)) {
      std::filesystem::remove_all(folder);
      SampleOptions options;
      options.folder = folder.string();
      options.libraryVersion = kVersion;
      options.photos = static_cast<std::uint32_t>(photos);
      options.images = false;
      writeSampleLibrary(options);
      std::filesystem::remove(folder / "AlbumData.xml");
      static_cast<void>(std::fclose(std::fopen(complete.c_str(), "w")));
    }
    const LogSink sink = setLogSink({});
    database = TVQiPhotoDatabase::initWithContentsOfDirectory(folder.string());
    setLogSink(sink);
  }
  return database;
}

List<Key> allKeysInRandomOrder(const TVQiPhotoDatabase& database) {
  List<Key>::Items keys;
  for (const Ref<ImageRecRef>& photo : database.photos()) {
    keys.push_back(Key::initWithKey(static_cast<std::uint32_t>(*photo->plainKeyNumber())));
  }
  std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
  // Made anew in the order in which they are asked, as a host that reads them from a list has them.
  for (Ref<Key>& key : keys) {
    key = Key::initWithKey(static_cast<std::uint32_t>(*key->plainNumber()));
  }
  return List<Key>(std::move(keys));
}

/// Reports the cost per key and what was found, which proves that the work was done.
void report(benchmark::State& state, std::size_t keys, std::size_t found) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(keys));
  state.counters["keys"] = static_cast<double>(keys);
  state.counters["found"] = static_cast<double>(found);
}

void photos(benchmark::State& state) {
  const Ref<TVQiPhotoDatabase> database = libraryOf(state.range(0));
  std::size_t found = 0;
  for (auto _ : state) {
    found = 0;
    for (const Ref<ImageRecRef>& photo : database->photos()) {
      found += photo ? 1 : 0;
    }
    benchmark::DoNotOptimize(found);
  }
  report(state, database->photos().size(), found);
}

void photosForKeys(benchmark::State& state) {
  const Ref<TVQiPhotoDatabase> database = libraryOf(state.range(0));
  const List<Key> keys = allKeysInRandomOrder(*database);
  std::size_t found = 0;
  for (auto _ : state) {
    found = database->photosForKeys(keys).size();
  }
  report(state, keys.size(), found);
}

void rollRecRefForKey(benchmark::State& state) {
  const Ref<TVQiPhotoDatabase> database = libraryOf(state.range(0));
  std::vector<Value> keys;
  for (const Ref<ImageRecRef>& roll : database->rollRecRefs()) {
    keys.push_back(roll->photoId());
  }
  std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
  std::size_t found = 0;
  for (auto _ : state) {
    found = 0;
    for (const Value& key : keys) {
      found += database->rollRecRefForKey(key) ? 1 : 0;
    }
  }
  report(state, keys.size(), found);
}

void keywordForKey(benchmark::State& state) {
  const Ref<TVQiPhotoDatabase> database = libraryOf(state.range(0));
  std::size_t found = 0;
  for (auto _ : state) {
    found = 0;
    for (const Ref<Keyword>& keyword : database->keywords()) {
      found += database->keywordForKey(keyword->keyValue()) ? 1 : 0;
    }
  }
  report(state, database->keywords().size(), found);
}

#define MRZIPHOTO_GROWTH(question) \
  BENCHMARK(question)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)
MRZIPHOTO_GROWTH(photos);
MRZIPHOTO_GROWTH(photosForKeys);
MRZIPHOTO_GROWTH(rollRecRefForKey);
MRZIPHOTO_GROWTH(keywordForKey);

}  // namespace
}  // namespace mrziphoto
