#pragma once

#include <QAVExport.h>
#include <QAVPixelImage.h>
#include <QAVResult.h>

#include <cstdint>
#include <ostream>

/// @file
/// Image data as the 7-bit text of a page-description stream, and back.
///
/// Run-length data is that of the PostScript `RunLengthDecode` filter (PostScript Language Reference, third edition,
/// 3.13.3): a length byte L, then for 0..127 the L + 1 bytes as they stand, for 129..255 one byte to be repeated
/// 257 - L times; 128 ends the data. Base-85 text is that of the `ASCII85Decode` filter: four bytes, most significant
/// first, as five digits '!' + d; 'z' for four zero bytes. Neither "<~" nor "~>" is ever written: the surrounding
/// stream adds what its format needs.
///
/// Decoders: `sizeOnly` 0 decodes into a new array (`out`, made with `new[]`, the caller's to free with `delete[]`;
/// `outLen` is the number of bytes in it), 1 stores only the decoded size in `outLen`. On failure `out` is null and
/// `outLen` is 0. A decoded size of 2^32 bytes or more, which `outLen` cannot hold, gives E_FAIL.

/// The streams that print data is written to.
using ostream_withassign = std::ostream;

/// Decodes run-length data. Data that ends early, without its end byte or within a record, gives the bytes that are
/// there (`outLen` of them), although the size asked for alone counts a last record in full.
///
/// E_FAIL for a null or empty `src` (`out` and `outLen` then stay as they are), for data that decodes to nothing, and
/// for any other `sizeOnly`.
QAV_EXPORT HRESULT RunLengthDecode(const std::uint8_t* src, unsigned int srcLen, std::uint8_t*& out,
                                   unsigned int& outLen, int sizeOnly);

/// Decodes base-85 text, all of it: "~>" ends a group but not the text.
///
/// White space is skipped everywhere: NUL, backspace, tab, line feed, form feed, carriage return, space and DEL, but
/// not vertical tab. A group of 2, 3 or 4 digits before "~>" or at the end gives 1, 2 or 3 bytes: one unit of its last
/// digit is added to its value, and the top bytes are taken. A group's value wraps at 2^32.
///
/// E_UNEXPECTED for malformed text (a character that is none of these, 'z' within a group, '~' without '>', a group of
/// one digit); with `sizeOnly` 0 that, and a result without bytes, is E_FAIL. Any other `sizeOnly` checks the text
/// alone.
QAV_EXPORT HRESULT ASCII85Decode(const std::uint8_t* src, unsigned int srcLen, std::uint8_t*& out, unsigned int& outLen,
                                 int sizeOnly);

/// Writes `count` bytes as base-85 text. After the group at every multiple of 80 bytes but the first, a new line is
/// begun and the stream flushed, so the first line of a call holds 21 groups and every other line 20. A last group of
/// 1, 2 or 3 bytes takes 2, 3 or 4 digits and never the short form 'z'. The stream's state is not looked at.
QAV_EXPORT void DumpASCII85(ostream_withassign& os, const std::uint8_t* data, unsigned long count);

/// Run-length encodes the samples of an image and writes the records and the end byte as base-85 text, in pieces of
/// about 900 bytes, each by a DumpASCII85 of its own.
///
/// `mode` 1 leaves alpha out and whitens transparent pixels, and `bottomUp` other than 0 begins with the last row, as
/// QAVPrtImageIterator has it. With any other mode and an image with alpha, all bytes count as samples, but only as
/// many are encoded as there would be without alpha.
///
/// With `sizeOnly` other than 0 nothing is written: 1 when the records take no more bytes than the image's pixels,
/// else 0. With `sizeOnly` 0 it returns 1. A null image and formats other than `L8` to `RGBA8888` give 0 and write
/// nothing.
QAV_EXPORT int RunLengthEncode(ostream_withassign& os, int mode, const QAVPixelImage* image, int bottomUp,
                               int sizeOnly);

/// RunLengthEncode with `sizeOnly` 1: whether run-length coding would not enlarge the image.
QAV_EXPORT int IsRLECompressible(ostream_withassign& os, int mode, const QAVPixelImage* image, int bottomUp);

/// Writes the samples of an image, without alpha and with transparent pixels white, as base-85 text: one DumpASCII85
/// for every 1024 samples and one for the rest. 0, or E_FAIL for a null image. An image of a format without bytes
/// counts as one zero sample a pixel.
QAV_EXPORT int DumpImage(ostream_withassign& os, const QAVPixelImage* image, int bottomUp);

/// Writes the transparency of an `LA88` or `RGBA8888` image as base-85 text of a one-bit mask: 1 where alpha is 0, the
/// first pixel in the most significant bit, every row padded to whole bytes, always the last row first. One DumpASCII85
/// for every 1024 bytes and one for the rest. The last argument has no effect.
///
/// 0, or E_FAIL for a null image, an image without pixels in memory, or a format without alpha.
QAV_EXPORT int DumpMask(ostream_withassign& os, const QAVPixelImage* image, int ignored);
