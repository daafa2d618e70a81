#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "../../values/Export.h"

namespace mrziphoto {

/// The text for one code of a camera setting.
struct SettingText {
  std::uint16_t code;
  std::string_view text;
};

/// The texts for a camera setting. They are keys into the string table of that name, and stand for
/// themselves where the table has no text for them.
struct SettingTexts {
  std::string_view stringTable;
  std::span<const SettingText> texts;
  /// For all other codes.
  std::string_view otherFormat;
};

inline constexpr std::array kSensingMethodTexts{SettingText{2, "One-chip colour area"}};

inline constexpr std::array kLightSourceTexts{
    SettingText{0, "Unknown"},
    SettingText{1, "Daylight"},
    SettingText{2, "Fluorescent"},
    SettingText{3, "Tungsten"},
    SettingText{10, "Flash"},
    SettingText{17, "Standard light A"},
    SettingText{18, "Standard light B"},
    SettingText{19, "Standard light C"},
    SettingText{20, "D55"},
    SettingText{21, "D65"},
    SettingText{22, "D75"},
    SettingText{255, "other"},
};

inline constexpr std::array kFlashTexts{
    SettingText{0, "Off"},
    SettingText{1, "On"},
    SettingText{5, "On - Light not detected"},
    SettingText{7, "On - Light detected"},
};

inline constexpr std::array kMeteringTexts{
    SettingText{0, "Unknown"},
    SettingText{1, "Average"},
    SettingText{2, "Center Weighted Average"},
    SettingText{3, "Spot"},
    SettingText{4, "Multi Spot"},
    SettingText{5, "Pattern"},
    SettingText{6, "Partial"},
    SettingText{255, "Other"},
};

inline constexpr SettingTexts kSensingMethods{"SensingMethod", kSensingMethodTexts,
                                              "Sensing method %d"};
inline constexpr SettingTexts kLightSources{"LightSource", kLightSourceTexts, "Light Source %d"};
inline constexpr SettingTexts kFlashStates{"Flash", kFlashTexts, "Flash %d"};
inline constexpr SettingTexts kMeteringModes{"Metering", kMeteringTexts, "Metering mode %d"};

/// In the order of their codes, none twice.
[[nodiscard]] consteval bool areSorted(const SettingTexts& setting) {
  return std::ranges::adjacent_find(setting.texts, std::ranges::greater_equal{},
                                    &SettingText::code) == setting.texts.end();
}
static_assert(areSorted(kSensingMethods) && areSorted(kLightSources) && areSorted(kFlashStates) &&
              areSorted(kMeteringModes));

/// The words for a code of that setting, in the language of the library's texts.
[[nodiscard]] MRZIPHOTO_EXPORT std::string describeSetting(const SettingTexts& setting,
                                                           std::uint16_t code);

}  // namespace mrziphoto
