#pragma once

/// @file
/// Entry points of an older image interface, kept so that programs linked against it still load. None does anything:
/// each ignores its arguments, whatever they are, and returns -1. They have C linkage and may be called from any
/// thread.

#include <QAVExport.h>

#include <cstdint>

/// X(name) for each of them: queries and settings, handles and bitmaps, colour reduction and dithering, conversions.
// clang-format off
#define QAV_LEGACY_FUNCTIONS(X) \
  X(IMGLOW_get_fileinfo) \
  X(IMGLOW_get_filetype) \
  X(IMGLOW_get_pages) \
  X(IMGLOW_get_pages_mem) \
  X(IMGLOW_get_palette) \
  X(IMGLOW_get_raster) \
  X(IMGLOW_is_tiled_image) \
  X(IMGLOW_read_pixel) \
  X(IMGLOW_set_bitmap_name) \
  X(IMGLOW_set_comp_quality) \
  X(IMGLOW_set_jpg_interleave) \
  X(IMG_create_handle) \
  X(IMG_create_handle_keep) \
  X(IMG_delete_bitmap) \
  X(IMG_delete_bitmap_keep) \
  X(IMG_bitmap_info) \
  X(IMG_decompress_bitmap) \
  X(IMG_decompress_bitmap_mem) \
  X(IMG_decompress_tiled_bitmap) \
  X(IMG_save_bitmap) \
  X(IMG_save_bitmap_mem) \
  X(IMG_flip_bitmapy) \
  X(IMG_runs_to_dib) \
  X(IMG_bayer_color) \
  X(IMG_bayer_mono) \
  X(IMG_diffusion_color) \
  X(IMG_diffusion_mono) \
  X(IMG_halftone_mono) \
  X(IMG_thresh_mono) \
  X(IMG_mediancut_color) \
  X(IMG_octree_color) \
  X(IMG_popularity_color) \
  X(IMG_cmyk_to_rgb) \
  X(IMG_promote_8) \
  X(IMG_promote_24) \
  X(IMG_promote_32)
// clang-format on

/// Declares one of them.
#define QAV_DECLARE_LEGACY_FUNCTION(name) QAV_EXPORT std::int32_t name(...);
extern "C" {
QAV_LEGACY_FUNCTIONS(QAV_DECLARE_LEGACY_FUNCTION)
}
#undef QAV_DECLARE_LEGACY_FUNCTION
