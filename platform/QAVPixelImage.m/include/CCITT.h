#pragma once

#include <QAVExport.h>

/// Codec of single bitonal rows: ITU-T T.4 one-dimensional run coding, white run first, no end-of-line code.
///
/// A row is a packed bitmap of (width + 7) / 8 bytes, first pixel in the most significant bit, 1 = black. The
/// codec keeps no state: calls on different threads do not disturb one another.
class QAV_EXPORT CCITT {
 public:
  /// Kept for callers that pair it with destroy_decoding_states; there is nothing to prepare.
  static void build_decoding_states();
  /// Kept likewise: there is nothing to give back.
  static void destroy_decoding_states();
  /// Expands a coded row of `width` pixels into `bitmap`, which must be zeroed. A null or damaged string gives the
  /// runs that came before the damage and white after it; a run that is too long ends with the row.
  static void decode(unsigned char* bitmap, const unsigned char* coded, unsigned int codedLength, unsigned int width);
  /// Codes a packed row; stores the new string (made with `new[]`, the caller's) in `coded` and returns its length in
  /// bytes. Bits behind the last pixel of the row are ignored. A null bitmap stores null and gives 0.
  static int encode(unsigned char*& coded, const unsigned char* bitmap, unsigned int width);
};
