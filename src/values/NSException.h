#pragma once

#include <cstddef>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Export.h"
#include "Value.h"

namespace mrziphoto {

inline constexpr std::string_view kNSInvalidArgumentException = "NSInvalidArgumentException";
inline constexpr std::string_view kNSInternalInconsistencyException =
    "NSInternalInconsistencyException";
inline constexpr std::string_view kNSRangeException = "NSRangeException";
inline constexpr std::string_view kNSParseErrorException = "NSParseErrorException";
inline constexpr std::string_view kNSUndefinedKeyException = "NSUnknownKeyException";
inline constexpr std::string_view kNSFileReadException = "NSFileReadException";
inline constexpr std::string_view kNSInconsistentArchiveException =
    "NSArchiverArchiveInconsistency";

/// A failure with a name and a reason.
class MRZIPHOTO_EXPORT NSException : public std::exception {
 public:
  NSException(std::string_view name, std::string reason,
              std::optional<std::size_t> offset = std::nullopt, Value userInfo = {});

  [[noreturn]] static void raise(std::string_view name, std::string reason) {
    throw NSException(name, std::move(reason));
  }

  [[nodiscard]] const std::string& name() const { return _name; }
  [[nodiscard]] const std::string& reason() const { return _reason; }
  /// A dictionary, or nothing.
  [[nodiscard]] const Value& userInfo() const { return _userInfo; }
  /// The byte offset at which a file was found damaged, where that is known.
  [[nodiscard]] std::optional<std::size_t> offset() const { return _offset; }
  /// "name: reason".
  [[nodiscard]] const char* what() const noexcept override { return _what.c_str(); }

 private:
  std::string _name;
  std::string _reason;
  std::string _what;
  std::optional<std::size_t> _offset;
  Value _userInfo;
};

}  // namespace mrziphoto
