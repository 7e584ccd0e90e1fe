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
zBytes Inflate(Bytes input, z64u declaredSize, const Place& place) {
  constexpr z64u kFirstSize = z64u{1} << 20;
  Codec codec;
  zBytes output(static_cast<zSize>(std::min(declaredSize, kFirstSize)));
  zSize done = 0;
  bool complete = false;
  for (;;) {
    zSize inputSize = input.size();
    zSize outputSize = output.size() - done;
    complete = codec.Step(input.data(), inputSize, output.data() + done, outputSize);
    input = input.subspan(inputSize);
    done += outputSize;
    if (complete && input.empty()) break;
    if (inputSize != 0 || outputSize != 0) continue;
    // No progress: the input ended inside a frame, or the output is full.
    if (done < output.size()) break;
    if (done == declaredSize) {
      ThrowDamage(place, "the chunk's records are longer than the %llu bytes it declares",
                  declaredSize);
    }
    output.resize(static_cast<zSize>(std::min<z64u>(declaredSize, z64u{2} * done)));
  }
  if (!complete || done != declaredSize) {
    ThrowDamage(place, "the chunk declares %llu bytes of records, %zu came out%s", declaredSize,
                done, complete ? "" : " before its data ended");
  }
  return output;
}

}  // namespace

zBytes Decompress(const Chunk& chunk, const Place& place) {
  const Bytes records = chunk.records.bytes;
  try {
    if (chunk.compression == "lz4") return Inflate<Lz4>(records, chunk.uncompressedSize, place);
    if (chunk.compression == "zstd") return Inflate<Zstd>(records, chunk.uncompressedSize, place);
  } catch (const std::string_view& complaint) {
    ThrowDamage(place, "the chunk cannot be decompressed: %s", complaint);
  }
  ThrowDamage(place, "unknown compression \"%s\"", chunk.compression);
}

}  // namespace sdk::replay
