// SPDX-License-Identifier: MIT
#include "formats/digitalsurf/reader.h"

#include <algorithm>
#include <limits>
#include <span>
#include <tuple>

#include "formats/digitalsurf/fold.h"
#include "formats/digitalsurf/validation.h"
#include "statuses.h"

namespace {

zPoint3d64f Widen(z32f x, z32f y, z32f z) {
  return {static_cast<z64f>(x), static_cast<z64f>(y), static_cast<z64f>(z)};
}

// Reads the samples that the file's position stands before. Invalid points become -32768; 32-bit
// samples are folded into 16 bits.
class SampleReader {
 public:
  SampleReader(const FileReader& file, const SurHeader& header, bool profile)
      : file_(file), header_(header), profile_(profile) {}

  // Before the first sample is read: makes the header's z spacing and offset those of the heights.
  zStatus Prepare(SurHeader& header) {
    if (header_.bitsPerPoint == 16) return zOK;
    const zStatus status = FindFolding(Count(), folding_);
    header.zSpacing = folding_.fold.spacing;
    header.zOffset = folding_.fold.offset;
    return status;
  }

  // Fills a block with the next heights.
  zStatus Read(std::span<z16s> heights) {
    return header_.bitsPerPoint == 16 ? Read16(heights) : Read32(heights);
  }

  // Of 32-bit samples. The header stays as it is.
  zStatus Measure(UnfoldedHeights& heights) {
    Folding folding;
    const zStatus status = FindFolding(Count(), folding);
    if (status != zOK) return status;
    z32s lowest = std::numeric_limits<z32s>::max();
    z32s highest = std::numeric_limits<z32s>::min();
    const zStatus read = ForEachBlock(Count(), [&](std::span<const z32s> samples) {
      for (const z32s sample : samples) {
        if (sample < folding.threshold) continue;
        ++heights.points;
        if (!folding.fold.Keeps(sample)) ++heights.lost;
        lowest = std::min(lowest, sample);
        highest = std::max(highest, sample);
      }
    });
    if (read != zOK || heights.points == 0) return read;
    const Axis axis{static_cast<z64f>(header_.zSpacing), static_cast<z64f>(header_.zOffset)};
    std::tie(heights.lowest, heights.highest) =
        std::minmax({Real(lowest, axis), Real(highest, axis)});
    return zOK;
  }

 private:
  static constexpr zSize kBlock = zSize{64} << 10;  // samples

  struct Folding {
    DigitalSurfFold fold;
    z32s threshold;  // samples below it are invalid points
  };

  zSize Count() const {
    return static_cast<zSize>(header_.pointsPerLine) * static_cast<zSize>(header_.lineCount);
  }

  zStatus Read16(std::span<z16s> left) {
    const auto threshold = static_cast<z16s>(header_.zMin);
    while (!left.empty()) {
      const std::span<z16s> block = left.first(std::min(left.size(), kBlock));
      left = left.subspan(block.size());
      const zStatus status = file_.Read(zType::z16s, block.data(), block.size());
      if (status != zOK) return status;
      if (header_.specialPoints != 1) continue;
      for (z16s& height : block) height = height < threshold ? kInvalidRaw : height;
    }
    return zOK;
  }

  zStatus Read32(std::span<z16s> heights) {
    auto height = heights.begin();
    return ForEachBlock(heights.size(), [&](std::span<const z32s> samples) {
      height = std::ranges::transform(samples, height, [&](z32s sample) {
                 return sample < folding_.threshold ? kInvalidRaw : folding_.fold(sample);
               }).out;
    });
  }

  // The samples are still to be read afterwards.
  zStatus FindFolding(zSize count, Folding& folding) {
    z32s lowest = header_.zMin;
    z32s highest = header_.zMax;
    if (header_.specialPoints != 1) {
      const zStatus status = FindRange(count, lowest, highest);
      if (status != zOK) return status;
    }
    folding.fold = MakeDigitalSurfFold(lowest, highest, header_.zSpacing, header_.zOffset);
    // A surface's threshold is the header's, whatever its flag says. In a profile without the flag
    // no point is invalid.
    folding.threshold = profile_ ? lowest : header_.zMin;
    return zOK;
  }

  // Looks ahead: the samples are still to be read afterwards.
  zStatus FindRange(zSize count, z32s& lowest, z32s& highest) {
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
  zStatus ForEachBlock(zSize count, Use use) {
    std::vector<z32s> block(std::min(count, kBlock));
    for (zSize size = 0; count > 0; count -= size) {
      size = std::min(count, block.size());
      const zStatus status = file_.Read(zType::z32s, block.data(), size);
      if (status != zOK) return status;
      use(std::span<const z32s>(block.data(), size));
    }
    return zOK;
  }

  FileReader file_;
  SurHeader header_;
  bool profile_;
  Folding folding_{};
};

zStatus Open(const zSource& source, bool profile, HeightFile& opened) {
  if (source.Size() == 0) return kMissing;
  FileReader file(source);
  SurHeader header;
  zStatus status = OpenDigitalSurf(file, header);
  if (status != zOK) return status;
  const Complaints complaints = ValidateSamples(header, profile, file.Left(), source.Size());
  if (!complaints.empty()) return complaints.front().status;
  SampleReader samples(file, header, profile);
  status = samples.Prepare(header);
  if (status != zOK) return status;

  Scan& scan = opened.scan;
  scan.kind = profile ? ScanKind::profile : ScanKind::surface;
  scan.width = static_cast<z32u>(header.pointsPerLine);
  scan.length = static_cast<z32u>(header.lineCount);
  scan.scale = Widen(header.xSpacing, header.ySpacing, header.zSpacing);
  scan.offset = Widen(header.xOffset, header.yOffset, header.zOffset);
  opened.read = [samples](std::span<z16s> heights) mutable { return samples.Read(heights); };
  return zOK;
}

zStatus Load(const zSource& source, bool profile, Scan& record, zAlloc alloc) {
  HeightFile file;
  const zStatus status = Open(source, profile, file);
  if (status != zOK) return status;
  return LoadHeights(file, record, alloc);
}

}  // namespace

zStatus OpenDigitalSurf(FileReader& file, SurHeader& header) {
  InitSurHeader(header);
  const zStatus status = ReadSurHeader(file, header);
  if (status != zOK || (header.commentSize <= 0 && header.privateSize <= 0)) return status;
  return file.Seek(static_cast<z64s>(file.Position()) + header.commentSize + header.privateSize);
}

zStatus LoadSurFileBuffer(const zSource& source, Scan& record, zAlloc alloc) {
  return Load(source, false, record, alloc);
}

zStatus OpenSurFile(const zSource& source, HeightFile& file) { return Open(source, false, file); }

zStatus FindUnfoldedHeights(const zSource& source, bool profile, UnfoldedHeights& heights) {
  FileReader file(source);
  SurHeader header;
  const zStatus status = OpenDigitalSurf(file, header);
  if (status != zOK) return status;
  return SampleReader(file, header, profile).Measure(heights);
}

zStatus LoadProFileBuffer(const zSource& source, Scan& record, zAlloc alloc) {
  constexpr Orv::Operation kOperation{"loadfilestream", "LoadProFileBuffer"};
  const zStatus status = Load(source, true, record, alloc);
  if (status == kBadInput) kOperation.Fail(status, "The pro file contains multiples profiles.");
  return status;
}
