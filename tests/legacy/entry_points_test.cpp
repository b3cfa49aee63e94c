#include <dlfcn.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>

namespace qav::test {
namespace {

const std::pair<const char*, const char*> kNames[] = {
    {"IMGLOW_",
     "get_fileinfo get_filetype get_pages get_pages_mem get_palette get_raster is_tiled_image read_pixel "
     "set_bitmap_name set_comp_quality set_jpg_interleave"},
    {"IMG_",
     "create_handle create_handle_keep delete_bitmap delete_bitmap_keep bitmap_info decompress_bitmap "
     "decompress_bitmap_mem decompress_tiled_bitmap save_bitmap save_bitmap_mem flip_bitmapy runs_to_dib "
     "bayer_color bayer_mono diffusion_color diffusion_mono halftone_mono thresh_mono mediancut_color octree_color "
     "popularity_color cmyk_to_rgb promote_8 promote_24 promote_32"},
};

TEST(LegacyEntryPoints, EachResolvesInTheSharedLibraryAndFails) {
  void* const library = dlopen(QAV_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  int resolved = 0;
  for (const auto& [prefix, names] : kNames) {
    std::istringstream words(names);
    for (std::string word; words >> word;) {
      void* const symbol = dlsym(library, (prefix + word).c_str());
      ASSERT_NE(symbol, nullptr) << prefix << word;
      EXPECT_EQ(reinterpret_cast<std::int32_t (*)()>(symbol)(), -1) << word;
      int handle = 3;
      EXPECT_EQ(reinterpret_cast<std::int32_t (*)(void*, const char*, int)>(symbol)(&handle, nullptr, -9), -1) << word;
      EXPECT_EQ(handle, 3);
      ++resolved;
    }
  }
  EXPECT_EQ(resolved, 36);
  dlclose(library);
}

}  // namespace
}  // namespace qav::test
