#pragma once

#include <optional>
#include <string>

#include <MRZiPhoto/albums/Album.h>
#include <MRZiPhoto/values/Value.h>

#include "RecordWriter.h"

namespace mrziphoto::tool {

/// Writes any value: numbers, texts and dates as such, keys as their numbers, keywords as their
/// texts, arrays and dictionaries with all that is in them, other objects as their descriptions.
void writeValue(RecordWriter& out, const Value& value);

/// The number of a key, which may stand as a `Key`, a bare number or a decimal text; nothing for
/// everything else.
[[nodiscard]] Value numberOfKey(const Value& key);

/// Writes the number of a key; `null` when it has none.
void writeKey(RecordWriter& out, const Value& key);

/// Writes the image keys of an album as a list of numbers, empty without keys.
void writeImageKeys(RecordWriter& out, const Ref<KeyMgr>& keys);

/// The text to show for a keyword of a photo: that of a `Keyword`, else the value's own text or
/// number.
[[nodiscard]] std::optional<std::string> keywordText(const Value& keyword);

}  // namespace mrziphoto::tool
