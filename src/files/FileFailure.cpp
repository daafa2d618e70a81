#include "FileFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

namespace mrziphoto {
namespace {

using Cause = FileFailure::Cause;

constexpr std::array kCauses{
    std::pair{ENOENT, Cause::notThere},       std::pair{ENOTDIR, Cause::notThere},
    std::pair{ENAMETOOLONG, Cause::notThere}, std::pair{EACCES, Cause::notAllowed},
    std::pair{EPERM, Cause::notAllowed},      std::pair{ENOMEM, Cause::tooLarge},
};

/// In English, as the sentence around it is, whatever language the host has chosen.
std::string reasonOf(int error) {
#ifdef __GLIBC__
  if (const char* const reason = strerrordesc_np(error)) {
    return reason;
  }
#endif
  return std::generic_category().message(error);
}

}  // namespace

FileFailure FileFailure::ofSystem(const std::string& path, int error) {
  const auto* const row = std::ranges::find(kCauses, error, &decltype(kCauses)::value_type::first);
  return {row != kCauses.end() ? row->second : Cause::system, path, reasonOf(error)};
}

FileFailure FileFailure::outside(const std::string& path, const std::string& folder) {
  return {Cause::outside, path,
          "it lies outside of '" + folder + "', the only folder that may be read"};
}

FileException::FileException(FileFailure failure)
    : NSException(kNSFileReadException, failure.sentence()), _failure(std::move(failure)) {}

}  // namespace mrziphoto
