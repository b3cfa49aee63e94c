#pragma once

#include <QAVExport.h>
#include <QAVPixelImage.h>
#include <QAVString.h>

/// @file
/// SGI image files ("The SGI Image File Format", version 1.00), one byte a channel, verbatim or run-length coded when
/// read, verbatim when written. Row 0 of the file is row 0 of the image: rows are not turned over.

extern "C" {

/// The image in the file at `path`, with one reference for the caller, or null.
///
/// Files of one channel give `L8`, of four `RGBA8888`, of any other number `RGB888` from the first three channels; one
/// that the file does not have is 0. Of the header only magic number, storage, width, height and channels are looked
/// at. What is missing in a short or damaged file is 0: a coded row ends where its bytes, or those of the file, end, or
/// when it is full.
///
/// Null for what is no regular file or cannot be opened, a wrong magic number, a run-length file too short for its own
/// tables, and a picture of more than 2^31 - 1 bytes. A file with a wrong magic number is left open.
QAV_EXPORT QAVPixelImage* ReadRGB(const QAVString& path);

/// Writes `image` to the file at `path`: `RGB888` and `RGBA8888` as they are, `LA88` as `RGBA8888`, any other format as
/// `RGB888`. Widths and heights above 65535 do not fit the header, which then has their lower 16 bits.
///
/// 0 written; 1 the file could not be opened (also a pipe that nobody reads); 2 not all bytes could be written; -1 no
/// image, no pixels, or no conversion to one of those formats.
QAV_EXPORT int WriteRGB(const QAVString& path, const QAVPixelImage* image);

}  // extern "C"
