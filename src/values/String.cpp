#include "String.h"

#include "Data.h"
#include "detail/Text.h"

namespace mrziphoto {
namespace {

/// Owns the characters of a text.
class Holder final : public Object {
 public:
  explicit Holder(std::string text) : _text(std::move(text)) {}

  [[nodiscard]] const Class& objectClass() const override {
    static constexpr Class kClass{"NSString"};
    return kClass;
  }
  [[nodiscard]] std::string_view text() const { return _text; }

 private:
  std::string _text;
};

}  // namespace

String::String(std::string_view text) {
  std::string repaired;
  if (!text::isUtf8(text)) {
    repaired = text::repairedUtf8(text);
    text = repaired;
  }
  const Data copy = Data::copyOf(text);
  _owner = copy.owner();
  _bytes = copy.bytes();
}

String String::holding(std::string text) {
  if (!text::isUtf8(text)) {
    return String(text);
  }
  const Ref<Holder> holder = make<Holder>(std::move(text));
  return {holder, holder->text()};
}

std::string String::utf8() const {
  return _encoding == Encoding::utf8
             ? std::string(_bytes)
             : text::utf8FromUtf16(_bytes, _encoding == Encoding::utf16BigEndian);
}

bool String::operator==(const String& other) const {
  if (_encoding == other._encoding && _encoding == Encoding::utf8) {
    return _bytes == other._bytes;
  }
  return withUtf8([&other](std::string_view text) { return other == text; });
}

bool String::operator==(std::string_view other) const {
  return withUtf8([other](std::string_view text) { return text == other; });
}

}  // namespace mrziphoto
