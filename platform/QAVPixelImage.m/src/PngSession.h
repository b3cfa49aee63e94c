#pragma once

#include <png.h>

/// libpng's two structures while a file is read or written. It leaves a failing call by longjmp: each function that
/// sets a jump holds nothing that needs destroying.
class PngSession {
 public:
  enum class Direction { Read, Write };

  explicit PngSession(Direction direction) : direction_(direction) {
    const auto create = direction == Direction::Read ? &png_create_read_struct : &png_create_write_struct;
    png_ = create(PNG_LIBPNG_VER_STRING, nullptr, &leave, &keepQuiet);
    if (png_) info_ = png_create_info_struct(png_);
  }
  ~PngSession() {
    if (direction_ == Direction::Read)
      png_destroy_read_struct(&png_, &info_, nullptr);
    else
      png_destroy_write_struct(&png_, &info_);
  }
  PngSession(const PngSession&) = delete;
  PngSession& operator=(const PngSession&) = delete;

  bool IsReady() const { return png_ && info_; }
  png_structp Png() const { return png_; }
  png_infop Info() const { return info_; }

 private:
  [[noreturn]] static void leave(png_structp png, png_const_charp) { png_longjmp(png, 1); }
  static void keepQuiet(png_structp, png_const_charp) {}

  Direction direction_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};
