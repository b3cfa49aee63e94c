#include "fuzz/picture_files.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kSignature = 8;

struct Chunk {
  std::string type;
  Bytes data;
};

std::uint32_t number(const std::uint8_t* at) {
  return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
}

void put(Bytes& bytes, unsigned long value) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

// The chunks as far as their lengths make sense; image data is one chunk.
std::vector<Chunk> chunksOf(const Bytes& file) {
  std::vector<Chunk> chunks;
  for (std::size_t at = kSignature; at + 12 <= file.size();) {
    const std::size_t length = std::min<std::size_t>(number(&file[at]), file.size() - at - 12);
    const auto data = file.begin() + static_cast<std::ptrdiff_t>(at) + 8;
    const std::string type(data - 4, data);
    if (chunks.empty() || type != "IDAT" || chunks.back().type != type) chunks.push_back({type, {}});
    chunks.back().data.insert(chunks.back().data.end(), data, data + static_cast<std::ptrdiff_t>(length));
    at += 12 + length;
  }
  return chunks;
}

Bytes fileOf(const std::vector<Chunk>& chunks) {
  Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  for (const Chunk& chunk : chunks) {
    put(file, chunk.data.size());
    const std::size_t type = file.size();
    file.insert(file.end(), chunk.type.begin(), chunk.type.end());
    file.insert(file.end(), chunk.data.begin(), chunk.data.end());
    put(file, crc32(0, &file[type], static_cast<uInt>(file.size() - type)));
  }
  return file;
}

Bytes expanded(const Bytes& data) {
  Bytes out(1 << 14);
  uLongf size = out.size();
  uncompress(out.data(), &size, data.data(), data.size());
  out.resize(size);
  return out;
}

Bytes compressed(const Bytes& data) {
  uLongf size = compressBound(data.size());
  Bytes out(size);
  compress2(out.data(), &size, data.data(), data.size(), Z_BEST_SPEED);
  out.resize(size);
  return out;
}

void mutate(Bytes& bytes) {
  const std::size_t most = bytes.size() + 64;
  std::size_t size = bytes.size();
  bytes.resize(most);
  size = LLVMFuzzerMutate(bytes.data(), size, most);
  bytes.resize(size);
}

}  // namespace

// Changes one chunk, of image data what it expands to, and makes the checksums fit again: without that no change would
// get past them.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
  std::vector<Chunk> chunks = chunksOf({data, data + size});
  if (chunks.empty() || seed % 8 == 0) return LLVMFuzzerMutate(data, size, maxSize);
  const std::size_t index = seed / 8 % chunks.size();
  Chunk& chunk = chunks[index];
  if (seed % 8 == 1) {
    const Chunk copy = chunk;
    chunks.insert(chunks.begin() + static_cast<std::ptrdiff_t>(seed / 64 % (chunks.size() + 1)), copy);
  } else if (seed % 8 == 2) {
    chunks.erase(chunks.begin() + static_cast<std::ptrdiff_t>(index));
  } else if (chunk.type == "IDAT" && seed % 8 > 3) {
    Bytes rows = expanded(chunk.data);
    mutate(rows);
    chunk.data = compressed(rows);
  } else {
    mutate(chunk.data);
  }
  const Bytes file = fileOf(chunks);
  if (file.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
  std::memcpy(data, file.data(), file.size());
  return file.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::read_png({data, size});
  return 0;
}
