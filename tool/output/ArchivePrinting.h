#pragma once

#include <MRZiPhoto/archive/ArchiveDocument.h>

#include "Output.h"

namespace mrziphoto::tool {

/// Writes an archive as indented lines for people to read, each group with its type and its values.
/// Objects, classes and C strings bear the numbers that references name, classes their superclasses
/// and versions where they stand first. Bytes are shortened.
void writeArchiveLines(Output& output, const ArchiveDocument& document);

/// Writes an archive as one line of JSON, with all bytes:
///
///     {"byteOrder", "streamerVersion", "systemVersion", "length",
///      "classes": [{"number", "name", "version", "superclass": number or null}],
///      "groups": [{"types", "values": [...]}],
///      "trailing": null or {"offset", "length", "reason"}}
///
/// A value is a number; a text; null for nil; "nan", "inf" or "-inf"; or an object that says more:
/// {"object": number, "class": name, "groups"}, {"reference": number}, {"class": name, "number"},
/// {"cString": number, "text"}, {"bytes": length, "hex"}.
void writeArchiveJson(Output& output, const ArchiveDocument& document);

}  // namespace mrziphoto::tool
