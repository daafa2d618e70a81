#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "../values/Export.h"
#include "../values/Value.h"

namespace mrziphoto {

/// What stands before and after the one value of an XML property list.
inline constexpr std::string_view kPropertyListBegin =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
inline constexpr std::string_view kPropertyListEnd = "</plist>\n";

/// A value as a whole XML property list in UTF-8, dictionaries in the order of their entries.
///
/// Throws NSException "NSInvalidArgumentException" for what a property list cannot hold: nothing,
/// objects, dates outside the years 1 to 9999, characters that XML does not allow, and values
/// nested deeper than a reader takes. The fraction of a date's second is left out.
[[nodiscard]] MRZIPHOTO_EXPORT std::string propertyListFromValue(const Value& value);

/// Appends a value as one element, `level` tabs from the margin, with a line feed behind it. A
/// large property list is written piece by piece between `kPropertyListBegin` and
/// `kPropertyListEnd`, with the tags of its outer dictionaries written by the caller. Throws as
/// `propertyListFromValue` does.
MRZIPHOTO_EXPORT void appendPropertyListValue(std::string& out, const Value& value,
                                              std::size_t level);
/// Appends the <key> that stands before a value, likewise.
MRZIPHOTO_EXPORT void appendPropertyListKey(std::string& out, std::string_view key,
                                            std::size_t level);

}  // namespace mrziphoto
