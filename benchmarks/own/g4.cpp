#include "support/Comparison.h"
#include "support/TextPage.h"

#include <CCITT_G4.h>

namespace qav::bench {
namespace {

std::vector<std::uint8_t>& coded() {
  static std::vector<std::uint8_t> bytes(textPage().size());
  return bytes;
}

int encode() {
  int size[2] = {kPageWidth, kPageHeight}, capacity = static_cast<int>(coded().size()), length = 0, error = 0;
  CCITT_G4_enc(textPage().data(), size, capacity, coded().data(), length, error);
  return length;
}

[[maybe_unused]] const bool added[] = {
    addOurs("G4 encode, text page", 6, [] { encode(); }),
    addOurs("G4 decode, text page", 2.5,
            [] {
              static const int length = encode();
              static std::vector<std::uint8_t> page(textPage().size());
              int size[2] = {kPageWidth, kPageHeight}, rows = 0, error = 0;
              CCITT_G4_dec(coded().data(), length, size, page.data(), rows, error);
            }),
};

}  // namespace
}  // namespace qav::bench
