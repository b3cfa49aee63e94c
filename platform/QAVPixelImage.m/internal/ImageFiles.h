#pragma once

#include "PixelAccess.h"

#include <QAVString.h>

#include <cstdint>
#include <cstdio>
#include <memory>

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

/// A regular file opened for reading, and its size.
struct InputFile {
  explicit InputFile(const QAVString& path);

  FilePtr stream;  ///< null when there is no such file
  std::uint64_t bytes = 0;
};

/// Whether a file of `fileBytes` bytes can hold a picture of this size. Compressed data that says more than 2048 times
/// its own length is a lie: deflate reaches 1032 and LZW 1310 times; a component of a JPEG file spends at least one
/// bit on 64 samples. What a reader allocates is in proportion to a picture that has passed this test.
bool isPlausiblePicture(std::uint64_t width, std::uint64_t height, std::uint64_t bitsPerPixel, std::uint64_t fileBytes);

// Readers: null for a file that is damaged, cut short or beyond belief. They print nothing.
ImagePtr readTiff(InputFile& file);
ImagePtr readPng(InputFile& file);
ImagePtr readJpeg(InputFile& file);

// Writers: false when not everything was written. The image has at least one pixel and a format that the file holds.
bool writeTiff(std::FILE* file, const QAVPixelImage& image);
bool writePng(std::FILE* file, const QAVPixelImage& image);
bool writeJpeg(std::FILE* file, const QAVPixelImage& image);
