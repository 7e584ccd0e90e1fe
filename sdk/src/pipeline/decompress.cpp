// SPDX-License-Identifier: MIT
#include "pipeline/decompress.h"

#include <lz4frame.h>
#include <zstd.h>

#include <algorithm>
#include <memory>

namespace sdk::replay {

namespace {

// Takes input and gives output; both counts go in as what is there and come out as what was used.
// Tells whether a frame is complete; throws std::string_view with the library's complaint.
struct Lz4 {
  std::unique_ptr<LZ4F_dctx, decltype(&LZ4F_freeDecompressionContext)> context{
      nullptr, LZ4F_freeDecompressionContext};

  Lz4() {
    LZ4F_dctx* created = nullptr;
    if (LZ4F_isError(LZ4F_createDecompressionContext(&created, LZ4F_VERSION)) != 0) {
      throw std::bad_alloc();
    }
    context.reset(created);
  }

  bool Step(const z8u* input, zSize& inputSize, z8u* output, zSize& outputSize) {
    const zSize left =
        LZ4F_decompress(context.get(), output, &outputSize, input, &inputSize, nullptr);
    if (LZ4F_isError(left) != 0) throw std::string_view(LZ4F_getErrorName(left));
    return left == 0;
  }
};

struct Zstd {
  std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context{ZSTD_createDCtx(), ZSTD_freeDCtx};

  Zstd() {
    // A frame may ask for a window of many times its size. Chunks of recordings need less: the
    // largest that zstd itself makes for contents of up to 32 MiB.
    constexpr int kWindowLogMax = 25;
    if (context == nullptr) throw std::bad_alloc();
    const zSize set = ZSTD_DCtx_setParameter(context.get(), ZSTD_d_windowLogMax, kWindowLogMax);
    if (ZSTD_isError(set) != 0) throw std::string_view(ZSTD_getErrorName(set));
  }

  bool Step(const z8u* input, zSize& inputSize, z8u* output, zSize& outputSize) {
    ZSTD_inBuffer in{input, inputSize, 0};
    ZSTD_outBuffer out{output, outputSize, 0};
    const zSize left = ZSTD_decompressStream(context.get(), &out, &in);
    if (ZSTD_isError(left) != 0) throw std::string_view(ZSTD_getErrorName(left));
    inputSize = in.pos;
    outputSize = out.pos;
    return left == 0;
  }
};

template <class Codec>
void Inflate(const CompressedChunk& chunk, PieceReader& reader, z64u budget, zBytes& output) {
  constexpr z64u kFirstSize = z64u{1} << 20;
  const Place place{chunk.offset, std::nullopt};
  const z64u most = std::min(chunk.unpackedSize, budget);
  Codec codec;
  // What a chunk before has taken is there.
  if (output.size() > most || output.size() < std::min(most, kFirstSize)) {
    output.resize(static_cast<zSize>(std::min(most, kFirstSize)));
  }
  zSize done = 0;
  bool complete = false;
  z64u left = chunk.packedSize;
  Bytes input;
  for (;;) {
    if (input.empty() && left > 0) {
      input = reader.Take(static_cast<zSize>(std::min<z64u>(left, zSize{64} << 10)));
      left -= input.size();
    }
    zSize inputSize = input.size();
    zSize outputSize = output.size() - done;
    complete = codec.Step(input.data(), inputSize, output.data() + done, outputSize);
    input = input.subspan(inputSize);
    done += outputSize;
    if (complete && input.empty() && left == 0) break;
    if (inputSize != 0 || outputSize != 0) continue;
    // No progress: the input ended inside a frame, or the output is full.
    if (done < output.size()) break;
    if (done == chunk.unpackedSize) {
      ThrowDamage(place, "the chunk's records are longer than the %llu bytes it declares",
                  chunk.unpackedSize);
    }
    if (done == most) {
      ThrowDamage(place,
                  "the compressed chunks hold more than a recording of this size may unpack to");
    }
    output.resize(static_cast<zSize>(std::min<z64u>(most, z64u{2} * done)));
  }
  if (!complete || done != chunk.unpackedSize) {
    ThrowDamage(place, "the chunk declares %llu bytes of records, %zu came out%s",
                chunk.unpackedSize, done, complete ? "" : " before its data ended");
  }
  output.resize(done);
}

}  // namespace

void Decompress(const CompressedChunk& chunk, PieceReader& reader, z64u budget, zBytes& records) {
  const Place place{chunk.offset, std::nullopt};
  try {
    if (chunk.compression == "lz4") return Inflate<Lz4>(chunk, reader, budget, records);
    if (chunk.compression == "zstd") return Inflate<Zstd>(chunk, reader, budget, records);
  } catch (const std::string_view& complaint) {
    ThrowDamage(place, "the chunk cannot be decompressed: %s", complaint);
  }
  ThrowDamage(place, "unknown compression \"%s\"", chunk.compression);
}

}  // namespace sdk::replay
