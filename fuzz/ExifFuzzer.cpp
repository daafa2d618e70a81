#include <cstddef>
#include <cstdint>

#include <MRZiPhoto/exif/TVQiPhotoUserData.h>
#include <MRZiPhoto/exif/detail/CameraRecords.h>
#include <MRZiPhoto/values/Log.h>
#include <MRZiPhoto/values/NSException.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mrziphoto;
  setLogSink({});
  try {
    const auto camera =
        TVQiPhotoUserData::initWithData(Data({}, {reinterpret_cast<const char*>(data), size}));
    for (const CameraRecord& record : kCameraRecords) {
      (void)camera->dataForKey(record.code).description();
    }
    (void)camera->shutter().description();
    (void)camera->flashDescription();
  } catch (const NSException&) {
    return 0;
  }
  return 0;
}
