// SPDX-License-Identifier: MIT
#include "loadfilestream/digitalsurf_reader.h"

#include <algorithm>
#include <limits>
#include <span>

#include "loadfilestream/digitalsurf_fold.h"
#include "loadfilestream/loadfilestream.h"
#include "sdk/message.h"

namespace {

zPoint3d64f Widen(z32f x, z32f y, z32f z) {
  return {static_cast<z64f>(x), static_cast<z64f>(y), static_cast<z64f>(z)};
}

}  // namespace

zStatus DigitalSurfReader::Open(const zBytes& bytes, zAlloc alloc) {
  zStatus status = file_.Open(bytes, alloc);
  if (status != zOK) return status;

  InitSurHeader(header_);
  status = ReadSurHeader(file_.Serializer(), header_);
  return status == zOK ? SkipZones() : status;
}

zPoint3d64f DigitalSurfReader::Scale() const {
  return Widen(header_.xSpacing, header_.ySpacing, header_.zSpacing);
}

zPoint3d64f DigitalSurfReader::Offset() const {
  return Widen(header_.xOffset, header_.yOffset, header_.zOffset);
}

zStatus DigitalSurfReader::SkipZones() {
  if (header_.commentSize <= 0 && header_.privateSize <= 0) return zOK;
  return file_.Seek(static_cast<z64s>(file_.Position()) + header_.commentSize +
                    header_.privateSize);
}

zStatus DigitalSurfReader::CheckSamples(z32s rows, z32s columns) const {
  if (rows < 0 || columns < 0) return zERROR_PARAMETER;
  const z64u count = static_cast<z64u>(rows) * static_cast<z64u>(columns);
  const z64u left = file_.Left();
  switch (header_.bitsPerPoint) {
    case 16:
      return count <= left / sizeof(z16s) ? zOK : zERROR_STREAM;
    case 32:
      return count <= left / sizeof(z32s) ? zOK : zERROR_STREAM;
    default:
      // ReadSamples refuses it, once there is an array; a sample of no size bounds none.
      return count <= left ? zOK : kRefused;
  }
}

zStatus DigitalSurfReader::ReadSamples(zObject points, InvalidBelow rule) {
  switch (header_.bitsPerPoint) {
    case 16:
      return Read16(points);
    case 32:
      return Read32(points, rule);
    default:
      return kRefused;
  }
}

zStatus DigitalSurfReader::Read16(zObject points) {
  const zStatus status = file_.ReadArray(points);
  if (status != zOK || header_.specialPoints != 1) return status;
  const auto threshold = static_cast<z16s>(header_.zMin);
  for (z16s& height : zArray_EditableItems<z16s>(points)) {
    height = height < threshold ? kInvalidRaw : height;
  }
  return zOK;
}

zStatus DigitalSurfReader::Read32(zObject points, InvalidBelow rule) {
  const std::span<z16s> heights = zArray_EditableItems<z16s>(points);
  z32s lowest = header_.zMin;
  z32s highest = header_.zMax;
  if (header_.specialPoints != 1) {
    const zStatus status = FindRange(heights.size(), lowest, highest);
    if (status != zOK) return status;
  }

  const DigitalSurfFold fold =
      MakeDigitalSurfFold(lowest, highest, header_.zSpacing, header_.zOffset);
  const z32s threshold = rule == InvalidBelow::headerMinimum ? header_.zMin : lowest;
  header_.zSpacing = fold.spacing;
  header_.zOffset = fold.offset;
  auto height = heights.begin();
  return ForEachBlock(heights.size(), [&](std::span<const z32s> samples) {
    height = std::ranges::transform(samples, height, [&](z32s sample) {
               return sample < threshold ? kInvalidRaw : fold(sample);
             }).out;
  });
}

// Looks ahead: the samples are still to be read afterwards.
zStatus DigitalSurfReader::FindRange(zSize count, z32s& lowest, z32s& highest) {
  lowest = std::numeric_limits<z32s>::max();
  highest = std::numeric_limits<z32s>::min();
  const auto start = static_cast<z64s>(file_.Position());
  const zStatus status = ForEachBlock(count, [&](std::span<const z32s> samples) {
    z32s least = lowest;  // in registers while the block is searched
    z32s greatest = highest;
    for (const z32s sample : samples) {
      least = std::min(least, sample);
      greatest = std::max(greatest, sample);
    }
    lowest = least;
    highest = greatest;
  });
  return status == zOK ? file_.Seek(start) : status;
}

// Gives the next `count` 32-bit samples to `use`, a block at a time.
template <class Use>
zStatus DigitalSurfReader::ForEachBlock(zSize count, Use use) {
  std::array<z32s, 4096> block;
  for (zSize size = 0; count > 0; count -= size) {
    size = std::min(count, block.size());
    const zStatus status = file_.Read(zType::z32s, block.data(), size);
    if (status != zOK) return status;
    use(std::span<const z32s>(block.data(), size));
  }
  return zOK;
}
