// SPDX-License-Identifier: MIT
#include "message/message.h"

using sdk::As;
using sdk::Message;
using sdk::Scan;

zStatus MxLib_Construct(MxLib* library) noexcept { return sdk::StartLibrary(library); }

MxKind MxMsg_Kind(MxMsg message) noexcept {
  const Message* data = As<Message>(message);
  return data == nullptr ? MxKind::none : data->Kind();
}

const MxStamp* MxDataMsg_Stamp(MxMsg message) noexcept {
  const Message* data = As<Message>(message);
  return data == nullptr ? nullptr : data->Stamp();
}

zStatus MxDataMsg_SetStamp(MxMsg message, zSize index, const MxStamp* stamp) noexcept {
  return index != 0 ? zERROR_PARAMETER : sdk::SetValue<Scan>(message, &Scan::stamp, stamp);
}

zStatus MxDataMsg_SetTime(MxMsg message, z64u time) noexcept {
  Scan* scan = As<Scan>(message);
  if (scan == nullptr) return zERROR_PARAMETER;
  scan->stamp.time = time;
  return zOK;
}

zStatus MxDataMsg_SetEncoder(MxMsg message, z64s encoder) noexcept {
  Scan* scan = As<Scan>(message);
  if (scan == nullptr) return zERROR_PARAMETER;
  scan->stamp.encoder = encoder;
  return zOK;
}
