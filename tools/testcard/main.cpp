#include <cstdio>

#include "TestCard.h"

/// Writes the project's test picture: qav_testcard OUTPUT.png
int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("qav_testcard: give the name of the PNG file to write\n", stderr);
    return 2;
  }
  QAVPixelImage card(qav::testcard::kWidth, qav::testcard::kHeight, RGBA8888);
  qav::testcard::drawTestCard(card);
  if (SUCCEEDED(card.WriteToFile(QAVString(argv[1]), "PNG"))) return 0;
  std::fprintf(stderr, "qav_testcard: cannot write '%s'\n", argv[1]);
  return 1;
}
