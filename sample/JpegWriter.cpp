#include "sample/JpegWriter.h"

#include <csetjmp>

#include <jpeglib.h>

namespace mrziphoto::sample {

static_assert(JpegWriter::kLongestSide <= JPEG_MAX_DIMENSION);

// The JPEG library reports a failure by a call that must not come back.
struct JpegWriter::Compressor {
  jpeg_error_mgr errors;  // first, so that the library's pointer to it is one to the whole
  std::jmp_buf failed;
  jpeg_compress_struct state;
  std::FILE* stream;
  JDIMENSION width;
  JDIMENSION height;

  [[noreturn]] static void jumpOut(j_common_ptr state) {
    std::longjmp(reinterpret_cast<Compressor*>(state->err)->failed, 1);
  }
};

JpegWriter::JpegWriter(std::FILE* stream, std::size_t width, std::size_t height)
    : _compressor(std::make_unique<Compressor>()) {
  jpeg_compress_struct& state = _compressor->state;
  state.err = jpeg_std_error(&_compressor->errors);
  _compressor->errors.error_exit = Compressor::jumpOut;
  _compressor->errors.output_message = [](j_common_ptr) {};
  _compressor->stream = stream;
  _compressor->width = static_cast<JDIMENSION>(width);
  _compressor->height = static_cast<JDIMENSION>(height);
}

JpegWriter::~JpegWriter() { jpeg_destroy_compress(&_compressor->state); }

// The functions below have no destructors that a jump could skip.

bool JpegWriter::begin(int quality, std::string_view exif) {
  jpeg_compress_struct& state = _compressor->state;
  if (setjmp(_compressor->failed) != 0) {
    return false;
  }
  jpeg_create_compress(&state);
  jpeg_stdio_dest(&state, _compressor->stream);
  state.image_width = _compressor->width;
  state.image_height = _compressor->height;
  state.input_components = static_cast<int>(kSamples);
  state.in_color_space = JCS_RGB;
  jpeg_set_defaults(&state);
  jpeg_set_quality(&state, quality, TRUE);
  jpeg_start_compress(&state, TRUE);
  if (!exif.empty()) {
    jpeg_write_marker(&state, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(exif.data()),
                      static_cast<unsigned>(exif.size()));
  }
  return true;
}

bool JpegWriter::writeRows(std::span<const std::uint8_t> samples) {
  jpeg_compress_struct& state = _compressor->state;
  if (setjmp(_compressor->failed) != 0) {
    return false;
  }
  const std::size_t rowSize = state.image_width * kSamples;
  for (std::size_t offset = 0; offset + rowSize <= samples.size(); offset += rowSize) {
    JSAMPROW row = const_cast<JSAMPROW>(samples.data() + offset);
    jpeg_write_scanlines(&state, &row, 1);
  }
  return true;
}

bool JpegWriter::finish() {
  if (setjmp(_compressor->failed) != 0) {
    return false;
  }
  jpeg_finish_compress(&_compressor->state);
  return true;
}

}  // namespace mrziphoto::sample
