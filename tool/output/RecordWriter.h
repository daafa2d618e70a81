#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <MRZiPhoto/values/Date.h>

namespace mrziphoto::tool {

class Output;

enum class Format { table, json, jsonl, csv };

/// What a command answers: a list of records, or one record.
enum class Shape { list, single };

/// Writes records that all have the same fields, as they come; no record is kept for long.
///
/// Between `beginRecord` and `endRecord` stands one value for each field, in the fields' order. A
/// value is one call of `null`, `boolean`, `number` or `text`, or a list or an object with all that
/// is in it.
class RecordWriter {
 public:
  RecordWriter() = default;
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;
  virtual ~RecordWriter() = default;

  /// The writer for a format; `output` outlives it.
  static std::unique_ptr<RecordWriter> to(Output& output, Format format, Shape shape,
                                          std::vector<std::string> fields);

  virtual void beginRecord() = 0;
  virtual void endRecord() = 0;
  /// After the last record.
  virtual void finish() = 0;

  virtual void null() = 0;
  virtual void boolean(bool value) = 0;
  /// A number, already written as JSON writes numbers.
  virtual void number(std::string_view digits) = 0;
  virtual void text(std::string_view text) = 0;
  virtual void beginList() = 0;
  virtual void endList() = 0;
  virtual void beginObject() = 0;
  /// Before each value of an object.
  virtual void name(std::string_view name) = 0;
  virtual void endObject() = 0;

  void integer(std::int64_t value);
  void unsignedInteger(std::uint64_t value);
  /// The shortest digits that read back as the same number; `null` for infinities and NaN.
  void real(double value);
  void real(float value);
  void text(const std::string& text) { this->text(std::string_view(text)); }
  void text(const std::optional<std::string>& text);
  /// ISO 8601; `null` for nothing and outside the years 1 to 9999.
  void date(const std::optional<Date>& date);
};

}  // namespace mrziphoto::tool
