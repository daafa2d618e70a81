#include "RecordWriter.h"

#include <array>
#include <charconv>
#include <cmath>

#include "CsvWriter.h"
#include "JsonWriter.h"
#include "TableWriter.h"

namespace mrziphoto::tool {
namespace {

// Between these a number is written without an exponent, as a person would.
constexpr double kSmallestPlain = 1e-5;
constexpr double kLargestPlain = 1e17;

template <class... Arguments>
void writeNumber(RecordWriter& out, Arguments... arguments) {
  std::array<char, 64> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), arguments...);
  out.number({digits.data(), static_cast<std::size_t>(result.ptr - digits.data())});
}

template <class Real>
void writeReal(RecordWriter& out, Real value) {
  const auto size = std::fabs(static_cast<double>(value));
  if (!std::isfinite(value)) {
    out.null();
  } else if (value == 0 || (size >= kSmallestPlain && size < kLargestPlain)) {
    writeNumber(out, value, std::chars_format::fixed);
  } else {
    writeNumber(out, value);
  }
}

}  // namespace

std::unique_ptr<RecordWriter> RecordWriter::to(Output& output, Format format, Shape shape,
                                               std::vector<std::string> fields) {
  switch (format) {
    case Format::csv:
      return std::make_unique<CsvWriter>(output, fields);
    case Format::table:
      if (shape == Shape::single) {
        return std::make_unique<LineTableWriter>(output, std::move(fields));
      }
      return std::make_unique<TableWriter>(output, fields);
    case Format::json:
    case Format::jsonl:
      break;
  }
  const bool isArray = format == Format::json && shape == Shape::list;
  return std::make_unique<JsonWriter>(
      output, fields, isArray ? JsonWriter::Layout::array : JsonWriter::Layout::lines);
}

void RecordWriter::integer(std::int64_t value) { writeNumber(*this, value); }

void RecordWriter::unsignedInteger(std::uint64_t value) { writeNumber(*this, value); }

void RecordWriter::real(double value) { writeReal(*this, value); }

void RecordWriter::real(float value) { writeReal(*this, value); }

void RecordWriter::text(const std::optional<std::string>& text) {
  if (text) {
    this->text(std::string_view(*text));
  } else {
    null();
  }
}

void RecordWriter::date(const std::optional<Date>& date) {
  text(date ? date->iso8601() : std::nullopt);
}

}  // namespace mrziphoto::tool
