#pragma once

#include <QAVExport.h>

/// @file
/// Bitonal pages coded after ITU-T T.6 (Group 4: two-dimensional, no end-of-line codes).
///
/// A bitmap here has one bit a pixel, 1 = black, and its rows follow one another *without padding*: pixel (x, y) is bit
/// y * width + x, counted from the most significant bit of the first byte. It takes (width * height + 7) / 8 bytes.
/// Both functions keep their state on the stack, so calls on different threads do not disturb one another. Neither
/// reads or writes a byte outside the buffers that it is given. Bitmaps above 2^31 - 1 bytes, and widths above
/// 2^31 - 5, are refused as too large.

/// Decodes one page.
///
/// `size` holds width and height in pixels. `dst` takes the bitmap; it is cleared first, and only rows that were
/// decoded completely are written to it. `rows` receives their number, also after an error. Returns 0 on success, 1 for
/// an error in the data, 2 for a null or empty source, 3 for a bad size or a null `dst`, and stores in `error`:
///   - 0: none;
///   - 8122: a bad argument (results 2 and 3);
///   - 14601: the next bits are no mode code or run-length code (uncompressed mode and end-of-line codes count as
///   none),
///     or a changing element would lie left of the one before;
///   - 14901: the data ends inside a row. After every mode code that leaves its row open, at least two bytes more must
///     follow the byte that the next code begins in;
///   - 14602: every row was decoded, but the end-of-facsimile-block code (0x001001) does not follow.
QAV_EXPORT int CCITT_G4_dec(const unsigned char* src, int srcLen, int* size, unsigned char* dst, int& rows, int& error);

/// Codes one page, the end-of-facsimile block included.
///
/// `bitmap` is read in the layout above (bits behind the last pixel are ignored), `size` holds width and height. `dst`
/// has `capacity` bytes; all of them are cleared first. It may overlap the bitmap. `length` receives the number of
/// coded bytes, 0 after an error.
/// Returns 0 on success, 1 when the code does not fit, 2 for a negative capacity or a null `dst`, 3 for a bad size or a
/// null bitmap, and stores in `error` 0, 8122 (results 2 and 3), or 14900: with U = bits of all rows / 8 + 1, the
/// capacity must be U + 3 or more. Nothing is ever stored beyond it.
QAV_EXPORT int CCITT_G4_enc(const unsigned char* bitmap, int* size, int& capacity, unsigned char* dst, int& length,
                            int& error);
