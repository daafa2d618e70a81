#include "NSException.h"

namespace mrziphoto {

NSException::NSException(std::string_view name, std::string reason,
                         std::optional<std::size_t> offset, Value userInfo)
    : _name(name),
      _reason(std::move(reason)),
      _what(_name + ": " + _reason),
      _offset(offset),
      _userInfo(std::move(userInfo)) {}

}  // namespace mrziphoto
