#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <MRZiPhoto/images/NSImage.h>

namespace mrziphoto::tool {

/// How thumbnails are laid out in one picture: in square cells, row by row.
struct SheetLayout {
  std::size_t columns = 0;
  std::size_t rows = 0;
  /// Pixels of a cell's side.
  std::uint32_t cell = 0;

  /// The layout for so many photos, at least one. Without a number of columns a sheet of few photos
  /// is about a square, one of many a long strip, which is made wider only where it would become
  /// too high. Throws `Failure` for a sheet that no JPEG picture can hold.
  static SheetLayout of(std::size_t photos, std::optional<std::uint32_t> columns,
                        std::uint32_t cell);

  [[nodiscard]] std::size_t width() const { return columns * cell; }
  [[nodiscard]] std::size_t height() const { return rows * cell; }
  /// The side of the square in a cell's middle that a thumbnail may fill.
  [[nodiscard]] std::uint32_t square() const { return cell - 2 * margin(); }
  [[nodiscard]] std::uint32_t margin() const { return cell / 16; }
};

/// The pixels of one row of cells, white where nothing is drawn: red, green and blue of each.
class SheetRow {
 public:
  explicit SheetRow(const SheetLayout& layout);

  void clear();
  /// Draws a thumbnail into the middle of a cell, or for none a grey square.
  void draw(std::size_t column, const Ref<NSBitmapImageRep>& thumbnail);
  [[nodiscard]] const std::vector<std::uint8_t>& samples() const { return _samples; }

 private:
  std::uint8_t* pixelAt(std::size_t column, std::size_t x, std::size_t y);
  void drawBitmap(std::size_t column, const NSBitmapImageRep& bitmap);

  SheetLayout _layout;
  std::vector<std::uint8_t> _samples;
};

}  // namespace mrziphoto::tool
