#pragma once

#include <string>

#include "Argument.h"
#include "Image.h"

/// Readers and writers of the file formats that take more than a line; FileFormats.cpp has their table.
namespace qavraster {

/// A complete page of the picture's size, one point a pixel, with what is transparent left unpainted.
bool writePostScript(const QAVPixelImage& image, const std::string& path, const Settings& settings);
/// The same as an encapsulated file, for use within other pages.
bool writeEncapsulatedPostScript(const QAVPixelImage& image, const std::string& path, const Settings& settings);

}  // namespace qavraster
