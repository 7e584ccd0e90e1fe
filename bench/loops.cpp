// SPDX-License-Identifier: MIT
// The loops that a conversion spends its time in, each on one scan of a million points.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>

#include "formats/csv/text.h"
#include "formats/digitalsurf/layout.h"
#include "formats/digitalsurf/reader.h"
#include "formats/pcd/quantize.h"
#include "formats/pcd/writer.h"
#include "scan/box.h"
#include "scan/heightrange.h"

namespace {

constexpr z32u kSide = 1024;
constexpr zSize kPoints = zSize{kSide} * kSide;
constexpr z64f kScale = 0.001;

// Waves with one invalid point in sixteen.
std::vector<z16s> MakeHeights() {
  std::minstd_rand random(1);
  std::uniform_real_distribution<z64f> noise(0, 500);
  std::vector<z16s> heights(kPoints);
  for (zSize i = 0; i < kPoints; ++i) {
    const z64f wave = 9000 * std::sin(static_cast<z64f>(i % kSide) / 300);
    heights[i] = random() % 16 == 0 ? kInvalidRaw : static_cast<z16s>(wave + noise(random));
  }
  return heights;
}

std::vector<zPoint3d32f> MakeCloud() {
  const std::vector<z16s> heights = MakeHeights();
  std::vector<zPoint3d32f> cloud(kPoints);
  for (zSize i = 0; i < kPoints; ++i) {
    cloud[i] = {static_cast<z32f>(i % kSide) * 0.01F, static_cast<z32f>(i / kSide) * 0.01F,
                heights[i] == kInvalidRaw ? std::numeric_limits<z32f>::quiet_NaN()
                                          : static_cast<z32f>(heights[i] * kScale)};
  }
  return cloud;
}

void Count(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<z64s>(kPoints));
}

void MinimumAndMaximumOf16Bits(benchmark::State& state, zVectors vectors) {
  const std::vector<z16s> heights = MakeHeights();
  for (auto _ : state) benchmark::DoNotOptimize(FindHeightRange(heights, vectors));
  Count(state);
}
BENCHMARK_CAPTURE(MinimumAndMaximumOf16Bits, Baseline, zVectors::baseline);
BENCHMARK_CAPTURE(MinimumAndMaximumOf16Bits, Wide, zVectors_Widest());

// A file of 32-bit samples; with `marked` points its header tells their range.
zBytes MakeWideSur(bool marked) {
  SurHeader header;
  InitSurHeader(header);
  header.bitsPerPoint = 32;
  header.specialPoints = marked ? 1 : 0;
  header.zMin = -10'000'000;
  header.zMax = 10'000'000;
  header.pointsPerLine = header.lineCount = kSide;
  header.totalPoints = kPoints;
  header.xSpacing = header.ySpacing = header.zSpacing = 1;
  std::vector<z32s> samples;
  for (const z16s height : MakeHeights()) samples.push_back(1000 * z32s{height});
  Orv::Object<void*> stream;
  zMemory_Construct(stream.Out(), &zAllocator::Default());
  WriteSurHeader(stream.Get(), header);
  zStream_WritePrimitives(stream.Get(), zType::z32s, samples.data(), samples.size());
  const auto bytes = zMemory_Bytes(stream.Get());
  return {bytes.begin(), bytes.end()};
}

void Folding(benchmark::State& state, bool marked) {
  const zBytes file = MakeWideSur(marked);
  for (auto _ : state) {
    Scan record;
    if (LoadSurFileBuffer(zMemorySource(file), record, &zAllocator::Default()) != zOK) {
      state.SkipWithError("no surface");
    }
  }
  Count(state);
}
BENCHMARK_CAPTURE(Folding, WithinTheHeadersRange, true);
BENCHMARK_CAPTURE(Folding, AfterMinimumAndMaximum, false);

void Quantise(const std::vector<zPoint3d32f>& cloud, std::span<zPoint3d16s> cells, Scan& record,
              zVectors vectors = zVectors_Widest()) {
  PcdCloud layout;
  layout.width = layout.height = kSide;
  layout.stride = sizeof(zPoint3d32f);
  layout.y = offsetof(zPoint3d32f, y);
  layout.z = offsetof(zPoint3d32f, z);
  const auto* bytes = reinterpret_cast<const z8u*>(cloud.data());
  const zMemorySource file({bytes, cloud.size() * sizeof cloud[0]});
  PcdRecords records(file, 0, layout);
  QuantizePoints(cells, records, layout, {}, record, {}, vectors);
}

void Quantising(benchmark::State& state, zVectors vectors) {
  if (vectors > zVectors_Widest()) return state.SkipWithError("not on this processor");
  const std::vector<zPoint3d32f> cloud = MakeCloud();
  std::vector<zPoint3d16s> cells(kPoints);
  Scan record;
  for (auto _ : state) {
    Quantise(cloud, cells, record, vectors);
    benchmark::ClobberMemory();
  }
  Count(state);
}
BENCHMARK_CAPTURE(Quantising, Baseline, zVectors::baseline);
BENCHMARK_CAPTURE(Quantising, Wide, zVectors::wide);

void BoundingBoxOfACloud(benchmark::State& state) {
  Scan record;
  record.kind = ScanKind::cloud;
  record.width = record.length = kSide;
  zArray2_Construct(record.points.Out(), zType::zPoint3d16s, kSide, kSide, &zAllocator::Default());
  Quantise(MakeCloud(), zArray_EditableItems<zPoint3d16s>(record.points.Get()), record);
  for (auto _ : state) benchmark::DoNotOptimize(FindBox(record));
  Count(state);
}
BENCHMARK(BoundingBoxOfACloud);

// Real coordinates as floats, with and without intensities between them.
void Dequantising(benchmark::State& state, bool intensities) {
  Orv::Object<void*> message;
  MxSurfaceMsg_ConstructSimple(message.Out(), kSide, kSide, &zAllocator::Default());
  std::ranges::copy(MakeHeights(),
                    zArray_EditableItems<z16s>(MxSurfaceMsg_PointsArray(message.Get(), 0)).begin());
  if (intensities) MxSurfaceMsg_AllocateIntensity(message.Get(), zType::z8u);
  for (auto _ : state) {
    Orv::Object<void*> stream;
    zNowhere_Construct(stream.Out());
    if (GetPcdFileStream(message.Get(), stream.Get(), &zAllocator::Default()) != zOK) {
      state.SkipWithError("no stream");
    }
  }
  Count(state);
}
BENCHMARK_CAPTURE(Dequantising, Points, false);
BENCHMARK_CAPTURE(Dequantising, PointsAndIntensities, true);

void CsvCells(benchmark::State& state) {
  const std::vector<z16s> heights = MakeHeights();
  const std::unique_ptr<char[]> text(new char[kPoints * kCellRoom]);
  AxisCells cells({kScale, 0});
  for (auto _ : state) {
    char* end = text.get();
    for (const z16s height : heights) end = cells.Write(end, height);
    benchmark::DoNotOptimize(end);
  }
  Count(state);
}
BENCHMARK(CsvCells);

}  // namespace
