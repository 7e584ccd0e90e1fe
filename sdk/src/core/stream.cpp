// SPDX-License-Identifier: MIT
#include "core/stream.h"

using sdk::As;
using sdk::Stream;

namespace {

class Nowhere : public Stream {
 public:
  zStatus Write(const void* /*source*/, zSize /*size*/) noexcept override { return zOK; }
  zStatus Seek(z64u /*position*/) noexcept override { return zOK; }
};

}  // namespace

zStatus zStream_Write(zStream stream, const void* source, zSize size) noexcept {
  Stream* destination = As<Stream>(stream);
  if (destination == nullptr || (source == nullptr && size > 0)) return zERROR_PARAMETER;
  return size == 0 ? zOK : destination->Write(source, size);
}

zStatus zStream_WritePrimitives(zStream stream, zType type, const void* items,
                                zSize count) noexcept {
  const zSize size = zType_Size(type);
  if (size == 0 || count > static_cast<zSize>(-1) / size) return zERROR_PARAMETER;
  return zStream_Write(stream, items, count * size);
}

zStatus zStream_Seek(zStream stream, z64u position) noexcept {
  Stream* moved = As<Stream>(stream);
  return moved == nullptr ? zERROR_PARAMETER : moved->Seek(position);
}

zStatus zNowhere_Construct(zStream* stream) noexcept {
  return sdk::HandOut(stream, sdk::Make<Nowhere>());
}
