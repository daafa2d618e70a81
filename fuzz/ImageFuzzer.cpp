#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include <MRZiPhoto/images/NSImage.h>
#include <MRZiPhoto/values/Log.h>

// An image file of any format: its size, and the picture drawn small.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  mrziphoto::setLogSink({});
  const int file = memfd_create("image", MFD_CLOEXEC);
  if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) {
    return -1;
  }
  const auto image =
      mrziphoto::NSImage::initByReferencingFile("/proc/self/fd/" + std::to_string(file));
  // Sound pictures that are merely large only cost time.
  constexpr float kMostPixels = 1e6F;
  if (image && image->size().width * image->size().height < kMostPixels) {
    (void)image->bitmapOfPixels(24, 16);
  }
  close(file);
  return 0;
}
