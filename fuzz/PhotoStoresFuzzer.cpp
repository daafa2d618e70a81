#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <MRZiPhoto/photos/ImageRecRef.h>
#include <MRZiPhoto/values/Log.h>

#include "InputFiles.h"
#include "Questions.h"
#include "support/StandInDatabase.h"

// The stores in the files beside a photo: its info and its attributes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mrziphoto;
  constexpr std::array<std::string_view, 2> kFiles{"Data/7", "Data/7.attr"};
  setLogSink({});
  const TemporaryFolder folder;
  writeInputFiles(folder, {reinterpret_cast<const char*>(data), size}, kFiles);

  StandInDatabase database;
  database.root = folder.path();
  database.version = 20;
  const auto photo = ImageRecRef::init();
  photo->setImageInfoForKey(dictionary({{"ImagePath", folder / "a.jpg"}, {"Roll", 1}}), 7);
  photo->setDatabase(&database);
  ask(*photo, kPhotoQuestions);
  photo->setDatabase(nullptr);
  return 0;
}
