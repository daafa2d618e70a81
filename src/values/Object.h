#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Export.h"

namespace mrziphoto {

class NSArchiver;
class NSUnarchiver;
class Object;
class Value;
struct Accessor;

/// What the class registry and the archives know of a class.
struct Class {
  /// The class name, as archives store it.
  std::string_view name;
  /// The class it derives from; nullptr for a class right under the root object.
  const Class* superclass = nullptr;
  /// The highest version that an archive may record for the class without a log line.
  std::uint32_t highestVersion = 0;
  /// Makes an empty instance, whose one reference the caller owns. nullptr for a class that no
  /// archive holds.
  Object* (*make)() = nullptr;

  /// True for the class itself and for every class that derives from it.
  [[nodiscard]] constexpr bool isKindOf(const Class& other) const {
    for (const Class* each = this; each != nullptr; each = each->superclass) {
      if (each == &other) {
        return true;
      }
    }
    return false;
  }
};

/// The root of all reference-counted objects. The count is thread-safe; an object's contents are
/// not: an object, and everything reached from it, belongs to one thread at a time.
class MRZIPHOTO_EXPORT Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object();

  /// The object's actual class.
  [[nodiscard]] virtual const Class& objectClass() const = 0;
  [[nodiscard]] std::string_view className() const { return objectClass().name; }
  [[nodiscard]] bool isKindOf(const Class& other) const { return objectClass().isKindOf(other); }

  /// A text that describes the object; the class name in angle brackets where a class says nothing
  /// better. The same in every run.
  [[nodiscard]] virtual std::string description() const;
  /// Identity, where a class says nothing better.
  [[nodiscard]] virtual bool isEqual(const Object& other) const;
  /// Equal objects have equal hashes.
  [[nodiscard]] virtual std::size_t hash() const;

  /// Fills a freshly made object from an archive. Throws NSException when the archive is damaged,
  /// and for classes that no archive holds.
  virtual void initWithCoder(NSUnarchiver& coder);
  /// Writes what `initWithCoder` reads. Throws NSException for classes that no archive holds.
  virtual void encodeWithCoder(NSArchiver& coder) const;

  /// The named operation that key-value access may call, or nullptr. Every object has
  /// "description".
  [[nodiscard]] virtual const Accessor* accessorNamed(std::string_view key) const;
  /// The value of the operation of that name; what `valueForUndefinedKey` says when there is none.
  [[nodiscard]] Value valueForKey(std::string_view key) const;
  /// Throws NSException "NSUnknownKeyException" where a class says nothing better.
  [[nodiscard]] virtual Value valueForUndefinedKey(std::string_view key) const;

  void retain(std::uint32_t times = 1) const noexcept {
    _references.fetch_add(times, std::memory_order_relaxed);
  }
  void release(std::uint32_t times = 1) const noexcept {
    // The last references need no locked instruction: nobody else can take a new one.
    if (_references.load(std::memory_order_acquire) == times ||
        _references.fetch_sub(times, std::memory_order_acq_rel) == times) {
      delete this;
    }
  }

 protected:
  Object() = default;

 private:
  friend class WeakLink;
  mutable std::atomic<std::uint32_t> _references{1};
  mutable bool _hasWeakLink = false;
};

/// A counted reference to an object, or an empty one. Works for classes that are only declared.
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}  // NOLINT(google-explicit-constructor): nothing is written as nullptr
  Ref(T* object) : _object(object) { retain(); }  // NOLINT(google-explicit-constructor)
  Ref(const Ref& other) : _object(other._object) { retain(); }
  Ref(Ref&& other) noexcept : _object(std::exchange(other._object, nullptr)) {}
  template <class U>
  requires(!std::is_same_v<T, U> && (std::is_same_v<T, Object> || std::is_base_of_v<T, U>))
      Ref(Ref<U> other)
  noexcept  // NOLINT(google-explicit-constructor): as pointers convert
      : _object(other.detach()) {}
  ~Ref() {
    if (_object != nullptr) {
      _object->release();
    }
  }
  Ref& operator=(Ref other) noexcept {
    std::swap(_object, other._object);
    return *this;
  }

  /// Takes over the reference that the caller owns.
  static Ref adopt(T* object) {
    Ref result;
    result._object = object;
    return result;
  }
  /// Gives the reference up to the caller and becomes empty.
  [[nodiscard]] Object* detach() { return std::exchange(_object, nullptr); }

  [[nodiscard]] T* get() const { return static_cast<T*>(_object); }
  T* operator->() const { return get(); }
  T& operator*() const { return *get(); }
  explicit operator bool() const { return _object != nullptr; }
  bool operator==(const Ref& other) const = default;

  /// The object as a `U`; empty when it is none.
  template <class U>
  [[nodiscard]] Ref<U> as() const {
    return Ref<U>(dynamic_cast<U*>(_object));
  }

 private:
  void retain() const {
    if (_object != nullptr) {
      _object->retain();
    }
  }

  // Kept as the root class, so that the class T need not be known to copy or drop a reference.
  Object* _object = nullptr;
};

/// Makes an object and answers the one reference to it.
template <class T, class... Arguments>
Ref<T> make(Arguments&&... arguments) {
  return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

/// A class's `make`, for its row in a class table.
template <class T>
Object* makeEmpty() {
  return new T;
}

/// A reference that does not keep its object alive and becomes empty when the object goes. Archives
/// hold objects that refer back to one around them; such references are weak, so that no cycle of
/// owners is left behind.
class MRZIPHOTO_EXPORT WeakLink {
 public:
  /// The one link to an object, made on first request; with a reference that the caller owns.
  static WeakLink* to(const Object& target);

  [[nodiscard]] Object* target() const { return _target; }
  void retain() noexcept { _references.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (_references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      delete this;
    }
  }

 private:
  friend class Object;
  explicit WeakLink(Object* target) : _target(target) {}
  ~WeakLink();
  static void targetGoes(const Object& target);

  Object* _target;
  std::atomic<std::uint32_t> _references{1};
};

/// The classes that archives may name, besides the platform's own. Those of this library are
/// registered when it is loaded; a host may add its own. Thread-safe.
class MRZIPHOTO_EXPORT ClassRegistry {
 public:
  /// Registers a class, in place of one of the same name. The class must live as long as the
  /// program.
  static void add(const Class& added);
  /// The class of that name, or nullptr.
  [[nodiscard]] static const Class* find(std::string_view name);
};

}  // namespace mrziphoto
