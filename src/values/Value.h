#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "Data.h"
#include "Date.h"
#include "Decimal.h"
#include "Export.h"
#include "Object.h"
#include "String.h"

namespace mrziphoto {

class Array;
class Dictionary;

/// One value of a library: nothing, a number, a text, a date, bytes, an array, a dictionary or an
/// object. Immutable; copies share their contents.
///
/// An accessor of another kind answers nothing (or 0, where the answer is a number). None throws.
class MRZIPHOTO_EXPORT Value {
 public:
  enum class Kind : std::uint8_t {
    nothing,
    integer,
    floating,
    decimal,
    string,
    date,
    data,
    array,
    dictionary,
    object
  };

  Value() = default;
  // NOLINTBEGIN(google-explicit-constructor): what a value can hold becomes one silently
  Value(std::nullptr_t) {}
  /// An integer of any type, as one of the archives' types: "B" for bool, "i" or "I" up to 32 bits
  /// and "q" or "Q" up to 64. Above the signed 64-bit range `integer` answers nothing, and
  /// description and `doubleValue` the number as it is.
  template <std::integral T>
  Value(T value) {
    static_assert(sizeof value <= sizeof(std::int64_t), "values hold 64 bits");
    constexpr bool isWide = sizeof value > sizeof(std::int32_t);
    constexpr bool isPromoted = sizeof value < sizeof(std::int32_t);  // to int, as in C++
    setInteger(static_cast<std::int64_t>(value), std::is_same_v<T, bool> ? 'B'
                                                 : std::is_signed_v<T> || isPromoted
                                                     ? (isWide ? 'q' : 'i')
                                                     : (isWide ? 'Q' : 'I'));
  }
  Value(float value) { setReal(static_cast<double>(value), 'f'); }
  Value(double value) { setReal(value, 'd'); }
  Value(const Decimal& value);
  Value(Date value);
  Value(const String& text);
  Value(String&& text);
  Value(std::string_view text) : Value(String(text)) {}
  Value(const std::string& text) : Value(String(text)) {}
  Value(const char* text) : Value(String(text)) {}
  /// Throws std::length_error for 2^32 bytes and more.
  Value(const Data& bytes);
  /// An array, a dictionary or any other object; nothing for an empty reference.
  Value(Ref<Object> object);
  template <class T>
  Value(Ref<T> object) : Value(Ref<Object>(std::move(object))) {}
  template <class T>
  Value(const std::optional<T>& value) : Value(value ? Value(*value) : Value()) {}
  // NOLINTEND(google-explicit-constructor)
  template <class T>
  Value(T* pointer) = delete;  // would silently become a boolean
  /// An integer of one of the archives' types, "cCsSiIlLqQB". `Q` takes the bits as unsigned.
  static Value integerOfType(std::int64_t value, char numberType) {
    Value result;
    result.setInteger(value, numberType);
    return result;
  }
  /// A reference that does not keep the object alive; nothing once the object is gone.
  static Value weak(const Object& object);

  Value(const Value& other) noexcept;
  Value(Value&& other) noexcept
      : _held(other._held),
        _bytes(other._bytes),
        _size(other._size),
        _kind(other._kind),
        _holds(other._holds),
        _detail(other._detail) {
    other._kind = Kind::nothing;
    other._holds = Holds::number;
  }
  Value& operator=(Value other) noexcept;
  ~Value() { clear(); }

  [[nodiscard]] Kind kind() const;
  [[nodiscard]] bool isNothing() const { return kind() == Kind::nothing; }
  [[nodiscard]] bool isString() const { return _kind == Kind::string; }
  /// True for a reference that does not keep its object alive. Do not follow it while walking over
  /// nested values: it may lead back to an object around it.
  [[nodiscard]] bool isWeak() const { return _holds == Holds::weakLink; }
  /// An integer, a floating or a decimal number.
  [[nodiscard]] bool isNumber() const {
    return _kind == Kind::integer || _kind == Kind::floating || _kind == Kind::decimal;
  }
  /// The archives' type code of a number: one of "cCsSiIlLqQB", "f" or "d"; 0 for all other values.
  [[nodiscard]] char numberType() const;

  /// The value of an integer; nothing for all other kinds, and for one above the 64-bit range.
  [[nodiscard]] std::optional<std::int64_t> integer() const;
  /// A number, or the leading decimal integer of a text, as a signed 32-bit integer; else 0. An
  /// integer keeps its low 32 bits, a text or a fraction stops at the ends of the range.
  [[nodiscard]] std::int32_t intValue() const;
  /// `intValue` as an unsigned 32-bit integer; a text that begins with no digit gives 0.
  [[nodiscard]] std::uint32_t unsignedIntValue() const;
  /// A number, or the number that a text begins with, as floating point; else 0.
  [[nodiscard]] double doubleValue() const;
  [[nodiscard]] std::optional<Decimal> decimal() const;
  [[nodiscard]] std::optional<Date> date() const;
  [[nodiscard]] std::optional<String> string() const;
  /// The characters of a text as UTF-8.
  [[nodiscard]] std::optional<std::string> text() const;
  [[nodiscard]] std::optional<Data> data() const;
  [[nodiscard]] Ref<Array> array() const;
  [[nodiscard]] Ref<Dictionary> dictionary() const;
  /// The object (arrays and dictionaries are objects, too).
  [[nodiscard]] Ref<Object> object() const { return Ref<Object>(target()); }
  /// The object when it is a `T`; else nothing.
  template <class T>
  [[nodiscard]] Ref<T> object() const {
    return Ref<T>(dynamic_cast<T*>(target()));
  }

  /// The value as a text: a text as it is, numbers in decimal, the other kinds as their
  /// descriptions; "(null)" for nothing. Of the object of a weak reference only the class name in
  /// angle brackets: its description may hold this one.
  [[nodiscard]] std::string description() const;
  /// The name of the class that archives know the value by; "<nil>" for nothing.
  [[nodiscard]] std::string_view className() const;
  /// Numbers by value whatever their types, texts by characters, containers by contents, other
  /// objects as they say. Nothing equals nothing.
  bool operator==(const Value& other) const;
  /// Equal values have equal hashes.
  [[nodiscard]] std::size_t hash() const;

 private:
  // What the value keeps alive: an object, the owner of a slice, or a weak link.
  union Held {
    Object* object;
    WeakLink* link;
    std::int64_t integer;
    double floating;
  };
  enum class Holds : std::uint8_t { number, object, weakLink };

  void setInteger(std::int64_t value, char numberType) {
    _held.integer = value;
    _kind = Kind::integer;
    _detail = numberType;
  }
  void setReal(double value, char numberType) {
    _held.floating = value;
    _kind = Kind::floating;
    _detail = numberType;
  }
  void clear() noexcept {
    if (_holds != Holds::number) {
      release();
    }
    _holds = Holds::number;
    _kind = Kind::nothing;
  }
  void release() const noexcept;
  [[nodiscard]] Object* target() const;
  void holdSlice(Ref<Object> owner, std::string_view bytes);
  [[nodiscard]] std::string_view bytes() const { return {_bytes, _size}; }
  [[nodiscard]] bool equalsNumber(const Value& other) const;
  [[nodiscard]] double asDouble() const;

  Held _held{.integer = 0};
  const char* _bytes = nullptr;
  std::uint32_t _size = 0;  // of a slice; the exponent of a decimal
  Kind _kind = Kind::nothing;
  Holds _holds = Holds::number;
  char _detail = 0;  // a number's type, a text's encoding
};

static_assert(sizeof(Value) <= 24, "every entry of every photo pays for a larger value");

}  // namespace mrziphoto
