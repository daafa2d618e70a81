#include "sample/SampleCamera.h"

#include <array>

namespace mrziphoto::sample {
namespace {

struct CameraKind {
  std::string_view maker;
  std::string_view model;
  std::string_view software;
};

constexpr std::array kCameras{
    CameraKind{"Example Optical Co.", "EX-100", "Firmware 1.2"},
    CameraKind{"Example Optical Co.", "EX-700 Pro", "Firmware 2.0.1"},
    CameraKind{"Sample Imaging", "Pocket 3", "v1.00"},
};

// Shutter speeds in APEX, a million times: 1/30, 1/60, 1/125, 1/250, 1/500 and a whole second.
constexpr std::array<std::uint32_t, 6> kShutterSpeeds{4906891, 5906891, 6965784,
                                                      7965784, 8965784, 0};
constexpr std::array<std::uint32_t, 5> kApertures{28, 35, 40, 56, 80};
constexpr std::array<std::uint32_t, 5> kSpeeds{80, 100, 200, 400, 1600};
constexpr std::array<std::uint32_t, 4> kFlashes{0, 1, 16, 25};
constexpr std::array<std::uint32_t, 5> kLightSources{0, 1, 3, 9, 255};

/// Takes numbers off one random number.
class Dice {
 public:
  explicit Dice(std::uint64_t chance) : _left(chance) {}
  std::uint32_t below(std::uint32_t end) {
    const auto number = static_cast<std::uint32_t>(_left % end);
    _left /= end;
    return number;
  }
  template <class T, std::size_t count>
  const T& oneOf(const std::array<T, count>& from) {
    return from[below(count)];
  }

 private:
  std::uint64_t _left;
};

}  // namespace

SampleCamera sampleCamera(std::uint64_t chance) {
  Dice dice(chance);
  const CameraKind& kind = dice.oneOf(kCameras);
  SampleCamera camera{kind.maker, kind.model, kind.software, {}};
  camera.settings = {
      {0x829D, dice.oneOf(kApertures), 10},  // f-number
      {0x8827, dice.oneOf(kSpeeds)},         // ISO speed
      {0x9201, dice.oneOf(kShutterSpeeds), 1000000},
      {0x9202, 30 + dice.below(30), 10},    // aperture, in APEX
      {0x9203, dice.below(90), 10},         // brightness
      {0x9204, dice.below(3) * 10, 10},     // exposure bias
      {0x9205, 29 + dice.below(4), 10},     // largest aperture
      {0x9206, 50 + dice.below(950), 100},  // distance in metres
      {0x9207, 1 + dice.below(5)},          // metering mode
      {0x9208, dice.oneOf(kLightSources)},
      {0x9209, dice.oneOf(kFlashes)},
      {0x920A, 62 + dice.below(400), 10},  // focal length in millimetres
      {0xA217, 2},                         // one-chip colour sensor
  };
  return camera;
}

}  // namespace mrziphoto::sample
