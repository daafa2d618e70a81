#include "detail/SettingDescriptions.h"

#include "../resources/Bundle.h"
#include "../resources/TVQiPhotoFramework.h"
#include "../values/Log.h"

namespace mrziphoto {

std::string describeSetting(const SettingTexts& setting, std::uint16_t code) {
  const auto localized = [&setting](std::string_view key) {
    return TVQiPhotoFramework::bundle()->localizedStringForKey(key, setting.stringTable);
  };
  const auto found = std::ranges::find(setting.texts, code, &SettingText::code);
  return found != setting.texts.end() ? localized(found->text)
                                      : stringWithFormat(localized(setting.otherFormat), code);
}

}  // namespace mrziphoto
