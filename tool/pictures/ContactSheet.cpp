#include "ContactSheet.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <span>
#include <string>

#include "../output/Failure.h"
#include "sample/JpegWriter.h"

namespace mrziphoto::tool {
namespace {

using sample::JpegWriter;

constexpr std::size_t kUsualWidth = 2048;
constexpr std::uint8_t kWhite = 0xFF;
constexpr std::uint8_t kGrey = 0xC8;

std::size_t quotientUp(std::size_t dividend, std::size_t divisor) {
  return (dividend + divisor - 1) / divisor;
}

std::size_t squareRootUp(std::size_t number) {
  return static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(number))));
}

std::size_t usualColumns(std::size_t photos, std::uint32_t cell) {
  const std::size_t most = JpegWriter::kLongestSide / cell;
  const std::size_t wide = std::max<std::size_t>(1, kUsualWidth / cell);
  return std::max(std::min(squareRootUp(photos), wide), quotientUp(photos, most));
}

[[noreturn]] void failToFit(std::size_t photos, const SheetLayout& layout) {
  const std::size_t most = JpegWriter::kLongestSide / layout.cell;
  const std::size_t columns = quotientUp(photos, most);
  const std::size_t cell = JpegWriter::kLongestSide / squareRootUp(photos);
  const std::string remedy =
      columns > most
          ? fmt::format("at most {} with --size, or the photos of one album with --album", cell)
      : layout.columns > most
          ? fmt::format("at most {} with --columns, or a smaller --size", most)
          : fmt::format("at least {} with --columns, or a smaller --size", columns);
  throw Failure(
      ExitStatus::notThere,
      fmt::format("a contact sheet of {} photos in {} columns of {} pixels is {} x {} pixels, and "
                  "a JPEG picture at most {} either way: take {}",
                  photos, layout.columns, layout.cell, layout.width(), layout.height(),
                  std::size_t{JpegWriter::kLongestSide}, remedy));
}

/// A sample of a pixel on white, whose alpha is no part of its colour.
std::uint8_t onWhite(unsigned sample, unsigned alpha) {
  return static_cast<std::uint8_t>((sample * alpha + kWhite * (255 - alpha) + 127) / 255);
}

}  // namespace

SheetLayout SheetLayout::of(std::size_t photos, std::optional<std::uint32_t> columns,
                            std::uint32_t cell) {
  SheetLayout layout;
  layout.cell = cell;
  layout.columns = columns ? std::min<std::size_t>(*columns, photos) : usualColumns(photos, cell);
  layout.rows = quotientUp(photos, layout.columns);
  if (layout.width() > JpegWriter::kLongestSide || layout.height() > JpegWriter::kLongestSide) {
    failToFit(photos, layout);
  }
  return layout;
}

SheetRow::SheetRow(const SheetLayout& layout)
    : _layout(layout), _samples(layout.width() * layout.cell * JpegWriter::kSamples, kWhite) {}

void SheetRow::clear() { std::ranges::fill(_samples, kWhite); }

std::uint8_t* SheetRow::pixelAt(std::size_t column, std::size_t x, std::size_t y) {
  return &_samples[(y * _layout.width() + column * _layout.cell + x) * JpegWriter::kSamples];
}

void SheetRow::draw(std::size_t column, const Ref<NSBitmapImageRep>& thumbnail) {
  if (thumbnail) {
    drawBitmap(column, *thumbnail);
    return;
  }
  for (std::size_t y = 0; y < _layout.square(); ++y) {
    std::memset(pixelAt(column, _layout.margin(), _layout.margin() + y), kGrey,
                _layout.square() * JpegWriter::kSamples);
  }
}

void SheetRow::drawBitmap(std::size_t column, const NSBitmapImageRep& bitmap) {
  const std::size_t width = std::min(bitmap.pixelsWide(), _layout.cell);
  const std::size_t height = std::min(bitmap.pixelsHigh(), _layout.cell);
  const std::size_t left = (_layout.cell - width) / 2;
  const std::size_t top = (_layout.cell - height) / 2;
  const std::span<const std::uint8_t> data = bitmap.bitmapData();
  for (std::size_t y = 0; y < height; ++y) {
    const std::uint8_t* from = data.data() + y * bitmap.bytesPerRow();
    std::uint8_t* to = pixelAt(column, left, top + y);
    for (std::size_t x = 0; x < width; ++x, from += bitmap.samplesPerPixel()) {
      for (std::size_t i = 0; i < JpegWriter::kSamples; ++i) {
        *to++ = onWhite(from[i], from[JpegWriter::kSamples]);
      }
    }
  }
}

}  // namespace mrziphoto::tool
