#pragma once

#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/Value.h"

namespace mrziphoto {

/// Reads an XML property list: one value, in a <plist> element or alone.
///
/// - <dict> and <array> become dictionaries and arrays. Of equal keys the later value counts. Empty
///   ones are one shared object, not to be changed.
/// - <string> and <data> become texts and bytes. A text that lies in `bytes` just as it is meant
///   (in UTF-8, without references, CDATA sections or carriage returns) is a slice of it and keeps
///   it alive.
/// - <integer>, decimal or after "0x" hexadecimal, becomes an integer of the archives' type "q", or
///   "Q" above its range; <real> a double ("nan", "inf" and "infinity" included); <true/> and
///   <false/> booleans; <date> an instant. White space around these is ignored.
///
/// The encoding is told by a byte order mark, by the zero bytes of UTF-16, or by the XML
/// declaration; otherwise it is UTF-8. Attributes are ignored. Entities that a document defines
/// for itself are not expanded.
///
/// Throws NSException "NSParseErrorException" when the document is not well-formed XML, when it is
/// no property list, and when it is nested deeper than `Limits::nesting`. The reason is
/// one sentence with line and byte, such as "the property list ends inside <dict> at line 7, byte
/// 312". Lines count from 1, bytes of the file from 0; the byte is also the exception's offset.
[[nodiscard]] MRZIPHOTO_EXPORT Value propertyListFromData(const Data& bytes);

}  // namespace mrziphoto
