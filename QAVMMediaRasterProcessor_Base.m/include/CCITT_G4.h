#pragma once

#include <QAVExport.h>

/// @file
/// Bitonal pages coded after ITU-T T.6 (Group 4: two-dimensional, no end-of-line codes).
///
/// A bitmap here has one bit a pixel, 1 = black, and its rows follow one another *without padding*: pixel (x, y) is bit
/// y * width + x, counted from the most significant bit of the first byte. It takes (width * height + 7) / 8 bytes.
/// Both functions keep their state on the stack, so calls on different threads do not disturb one another. Neither
/// reads or writes a byte outside the buffers that it is given. Bitmaps above 2^31 - 1 bytes, widths above 2^31 - 5,
/// and sizes that there is no memory for, are refused as too large: result 3, error 8122.

/// Decodes one page.
///
/// `size` holds width and height in pixels. `dst` takes the bitmap; it is cleared first (after a bad argument it stays
/// as it was), and only rows that were decoded completely are written to it. `rows` receives their number, also after
/// an error.
///
/// The reference elements b1 and b2 are those of the pixels above, of white before the first row; the first pixel of a
/// row may be black. A run of length 0 changes no colour where it stands. Any number of make-up codes, in any order,
/// may precede a terminating code. What reaches beyond the right edge ends there. A row is complete as soon as a
/// changing element, or the end of a pass, lies behind the last pixel; what follows the end code is not looked at.
///
/// Returns 0 on success, 1 for an error in the data, 2 for a null or empty source, 3 for a bad size or a null `dst`
/// (which comes first), and stores in `error`:
///   - 0: none;
///   - 8122: a bad argument (results 2 and 3);
///   - 14601: the next bits are no mode code or run-length code (uncompressed mode and end-of-line codes count as
///     none), or a changing element would lie left of the one before;
///   - 14901: the data ends before a row, within a code, or inside a row: after a mode code, and its runs, that leave
///     their row open, the next code must begin before the last two bytes of the data;
///   - 14602: every row was decoded, but the end-of-facsimile-block code (0x001001) does not follow.
QAV_EXPORT int CCITT_G4_dec(const unsigned char* src, int srcLen, int* size, unsigned char* dst, int& rows, int& error);

/// Codes one page, the end-of-facsimile block included.
///
/// `bitmap` is read in the layout above (bits behind the last pixel are ignored), `size` holds width and height. `dst`
/// has `capacity` bytes; all of them are cleared first. It may overlap the bitmap. `length` receives the number of
/// coded bytes, 0 after an error.
///
/// Rows are coded as T.6 says: pass mode where b2 lies left of a1, vertical mode where a1 is at most 3 from b1,
/// horizontal mode otherwise; runs above 2623 take codes of 2560 first.
///
/// Returns 0 on success, 1 when the code does not fit, 2 for a negative capacity or a null `dst`, 3 for a bad size or a
/// null bitmap (which comes first), and stores in `error` 0, 8122 (results 2 and 3), or 14900: with U = (bits of all
/// rows) / 8 + 1, rounded down, the capacity must be U + 3 or more. This is looked at when all rows are coded; `dst`
/// then holds as much of them as fits. Nothing is ever stored beyond the capacity.
QAV_EXPORT int CCITT_G4_enc(const unsigned char* bitmap, int* size, int& capacity, unsigned char* dst, int& length,
                            int& error);
