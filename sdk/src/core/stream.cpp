// SPDX-License-Identifier: MIT
#include "core/stream.h"

using sdk::As;
using sdk::Stream;

zStatus zStream_Read(zStream stream, void* destination, zSize size) noexcept {
  Stream* source = As<Stream>(stream);
  if (source == nullptr || (destination == nullptr && size > 0)) return zERROR_PARAMETER;
  return size == 0 ? zOK : source->Read(destination, size);
}

zStatus zStream_Write(zStream stream, const void* source, zSize size) noexcept {
  Stream* destination = As<Stream>(stream);
  if (destination == nullptr || (source == nullptr && size > 0)) return zERROR_PARAMETER;
  return size == 0 ? zOK : destination->Write(source, size);
}

zStatus zStream_Seek(zStream stream, z64s position) noexcept {
  Stream* moved = As<Stream>(stream);
  return moved == nullptr ? zERROR_PARAMETER : moved->Seek(position);
}
