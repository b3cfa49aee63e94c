#pragma once

#include <QAVExport.h>

#include <cstdint>

/// @file
/// Block-record raster files: fixed blocks of 80 bytes that carry length-prefixed records with big-endian 32-bit
/// numbers.
///
/// After a prologue of three blocks every record is a block whose first four bytes are its length, followed by its
/// data, padded to whole blocks. Two records, the record with the number of entries, and one more record come first;
/// then the entries. An image entry (type 1) has an image record with the extents, the data-type code, the number of
/// bands and a table size, and behind it its data records; any other entry has as many records as it says, all passed
/// over.
///
/// Fields of an image record (each 32 bits): extent 0 (columns) at byte 0, extent 1 (rows) at 4, the data-type code at
/// 12, the number of bands S at 16, the table size at 32. One-channel data has S + 1 data records, the first of them
/// the table of four-byte entries; three-channel data has 3 S, with two more before them when the table size is not 0.
///
/// Data-type codes: 0..9 one channel of 16 bits, compression 0..9; 10400 + c three channels of 8 bits; 20400 + c one
/// channel of 8 bits; 20500 + c one channel of 16 bits; compression c in 0..99.
///
/// A band has min(262144 / extent 0, extent 1) rows, at least one (an extent 0 of 0 counts as 1 here). With b bytes a
/// sample and big-endian numbers, its record holds, by compression:
///   - 0: the rows as they are. Neither the rows' places in the record nor those in the result are multiplied by b:
///     rows of 16-bit samples lie over one another;
///   - 1: runs of a 16-bit count and two bytes of sample, one every 2 b bytes, that go on from row to row;
///   - 2: for every row a 16-bit count, the signed 16-bit first column (from 1), and as many bytes, each of which
///     becomes a zero byte and itself; a count of 65535 is an empty row and stands alone;
///   - 7 (b = 1 only) and 8 (b = 2 only): runs of count and sample, b bytes each, that begin anew with every row; what
///     exceeds the row is dropped, but for the column behind it where the rectangle has one.
///
/// Compressions 1 and 2 store two bytes a sample, also where b is 1; what falls outside the band's result is dropped.
/// Other compressions cannot be read.
///
/// What a damaged file says is never trusted: a length block cut short reads as zeros (a length of 0 is a record
/// error), a record cut short ends where the file does and its missing fields are 0, a negative length passes over as
/// many bytes, no record is allocated before the file is known to hold it, and counts of any size end with the file.
/// Pixels that the data do not cover are black. Only regular files are opened.

extern "C" {

/// Reads the header of the file `path`.
///
/// `extent` (two values) is cleared, then receives the extents of every image entry met, the last one staying; `kind`
/// becomes 1 as soon as the file is open. Either may be null.
/// Returns 0; -5 when the file cannot be opened; -1 for a record error; -2 for an unknown data-type code.
QAV_EXPORT int ripicrhd(const char* path, int* kind, std::int64_t extent[2]);

/// Reads the rectangle of size[0] x size[1] pixels (columns x rows) whose first corner is (origin[0], origin[1]) into
/// `out`, three bytes a pixel: red, green, blue. `out` is cleared first. The first image entry of the file is read.
///
/// Samples of one channel and 8 bits go through the image's table when it has entries (bytes 0, 1, 2 of an entry are
/// red, green, blue; an index behind its end gives black), otherwise they are grey; samples of 16 bits give their high
/// byte as grey. Three-channel data has one record a channel, red, green, blue, for every band of rows.
///
/// The extents count as last indices: returns -10 for an origin below 0 or above its extent, and -11 for a rectangle
/// with extent - origin + 1 < size. An empty rectangle gives 0 then. Otherwise returns 0; -5 when the file cannot be
/// opened or `kind` is not 1 (what ripicrhd stores); -1 for a record error, a failed allocation or a compression that
/// cannot be read; -2 for an unknown data-type code; -4 when there is no image entry, or fewer bands than the rectangle
/// needs. A null `origin` counts as a bad origin, a null `size` or `out` as a bad rectangle.
QAV_EXPORT int ripicrdt(const char* path, int* kind, const std::int64_t origin[2], const std::int64_t size[2],
                        unsigned char* out);

}  // extern "C"
