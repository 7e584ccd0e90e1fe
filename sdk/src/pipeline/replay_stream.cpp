// SPDX-License-Identifier: MIT
#include "sdk/pipeline.h"

namespace Plovia {

namespace {

constexpr zSize kFewBytes = 1024;

}  // namespace

// Calls take(bytes) for one piece after the other until it gives another status than zOK.
template <class Take>
zStatus ReplayStream::InOrder(const Take& take) const {
  const std::span<const z8u> own(own_);
  zSize done = 0;
  for (const View& view : views_) {
    zStatus status = take(own.subspan(done, view.at - done));
    if (status == zOK) status = take(view.bytes);
    if (status != zOK) return status;
    done = view.at;
  }
  return take(own.subspan(done));
}

void ReplayStream::AppendInPlace(std::span<const z8u> bytes) {
  if (bytes.size() <= kFewBytes) return Append(bytes);
  views_.push_back({own_.size(), bytes});
  viewed_ += bytes.size();
}

void ReplayStream::Append(const ReplayStream& other) {
  const zSize start = own_.size();
  Append(other.own_);
  for (const View& view : other.views_) views_.push_back({start + view.at, view.bytes});
  viewed_ += other.viewed_;
}

zBytes ReplayStream::ToBytes() const {
  zBytes bytes;
  bytes.reserve(static_cast<zSize>(Size()));
  static_cast<void>(InOrder([&](std::span<const z8u> piece) {
    bytes.insert(bytes.end(), piece.begin(), piece.end());
    return zOK;
  }));
  return bytes;
}

zStatus ReplayStream::WriteTo(zStream stream) const noexcept {
  return InOrder([stream](std::span<const z8u> piece) {
    return zStream_Write(stream, piece.data(), piece.size());
  });
}

}  // namespace Plovia
