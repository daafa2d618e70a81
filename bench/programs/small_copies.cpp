// Writes a small copy of every picture named as a PNG file: small_copies FOLDER PICTURE...

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/images/NSImage.h>

int main(int argc, char** argv) {
  constexpr float kLongestSide = 240;
  for (int i = 2; i < argc; ++i) {
    const std::filesystem::path picture = argv[i];
    const auto image = mrziphoto::NSImage::initByReferencingFile(picture.string());
    const mrziphoto::NSSize size = image ? image->size() : mrziphoto::NSSize{};
    const float scale = kLongestSide / std::max({size.width, size.height, 1.0F});
    const auto copy =
        image ? image->scaledCopy({size.width * scale, size.height * scale}) : nullptr;
    const auto file = copy ? copy->pngData() : std::nullopt;
    const std::filesystem::path target = argv[1] / picture.filename().replace_extension("png");
    if (!file || !mrziphoto::FileManager::writeAtomically(target.string(), file->bytes())) {
      std::fprintf(stderr, "no small copy of %s\n", picture.c_str());
      return 1;
    }
  }
  return 0;
}
