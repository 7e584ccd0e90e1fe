// SPDX-License-Identifier: MIT
#include "support/recordings.h"

#include <sstream>
#include <tuple>

namespace {

// With bytes of their own, whatever the items are.
void Fill(zObject array, int seed) {
  const zSize size = zArray_Count(array) * zType_Size(zArray_ItemType(array));
  auto* bytes = static_cast<z8u*>(zArray_EditableData(array));
  for (zSize i = 0; i < size; ++i) bytes[i] = static_cast<z8u>(seed * 11 + static_cast<int>(i));
}

void SetStamp(MxMsg message, int seed) {
  const auto n = static_cast<z64u>(seed);
  const MxStamp stamp{n, n * 10 + 1, -seed - 2, -3, 0xBEEF, {n + 4, 5, ~z64u{0}}};
  MustBeOk(MxDataMsg_SetStamp(message, 0, &stamp));
}

std::ostream& operator<<(std::ostream& out, const zPoint3d64f& point) {
  return out << '(' << point.x << ' ' << point.y << ' ' << point.z << ')';
}

void DescribeItems(std::ostream& out, zObject array) {
  out << " type " << static_cast<int>(zArray_ItemType(array)) << ':';
  const zSize size = zArray_Count(array) * zType_Size(zArray_ItemType(array));
  const auto* bytes = static_cast<const z8u*>(zArray_Data(array));
  for (zSize i = 0; i < size; ++i) out << ' ' << int{bytes[i]};
}

}  // namespace

Handle MakeSurfaceWithIntensity(int seed) {
  Handle surface = MakeSurface(5, 3, std::vector<z16s>(15), {0.1, 0.2, 1e-9}, {1.5 + seed, -2, 3});
  const BoundingBox6 box{{1, 2, 3}, {4, 5, 6.5 + seed}};
  MustBeOk(MxSurfaceMsg_SetBoundingBox(surface.Get(), &box));
  MustBeOk(MxSurfaceMsg_AllocateIntensity(surface.Get(), zType::z8u));
  Fill(MxSurfaceMsg_PointsArray(surface.Get(), 0), seed);
  Fill(MxSurfaceMsg_Intensities(surface.Get(), 0), seed + 100);
  SetStamp(surface.Get(), seed);
  return surface;
}

Handle MakeCloud(int seed) {
  Handle cloud = MakeCloudOf(2, 3, std::vector<zPoint3d16s>(6));
  Fill(MxSurfaceMsg_PointsArray(cloud.Get(), 0), -seed);
  SetStamp(cloud.Get(), seed + 1);
  return cloud;
}

Handle MakeProfile(zType pointType, int seed) {
  Handle profile;
  MustBeOk(MxProfileMsg_Construct(profile.Out(), pointType, 1, 7, DefaultAlloc()));
  Fill(MxProfileMsg_PointsArray(profile.Get(), 0), seed + 5);
  const zPoint3d64f offset{-1, 0, 1e300}, scale{0.25, 1, 0.5};
  const BoundingBox6 box{{-1, -2, -3}, {1, 0, 2}};
  MustBeOk(MxProfileMsg_SetOffset(profile.Get(), &offset));
  MustBeOk(MxProfileMsg_SetScale(profile.Get(), &scale));
  MustBeOk(MxProfileMsg_SetBoundingBox(profile.Get(), &box));
  SetStamp(profile.Get(), seed + 2);
  if (pointType == zType::z16s) {
    MustBeOk(MxProfileMsg_AllocateIntensity(profile.Get(), zType::z8u));
    Fill(MxProfileMsg_IntensityArray(profile.Get(), 0), seed);
  }
  return profile;
}

Handle MakeArrayOf(const std::vector<Handle>& items) {
  Handle array;
  MustBeOk(MxArrayMsg_Construct(array.Out(), DefaultAlloc()));
  for (const Handle& item : items) MustBeOk(MxArrayMsg_Add(array.Get(), item.Get()));
  return array;
}

std::string Describe(MxMsg message) {
  std::ostringstream out;
  out.precision(17);
  const MxKind kind = MxMsg_Kind(message);
  if (kind == MxKind::none) return "none";
  if (kind == MxKind::array) {
    std::string text = "array of " + std::to_string(MxArrayMsg_Count(message));
    for (zSize i = 0; i < MxArrayMsg_Count(message); ++i) {
      text += "\n  " + Describe(MxArrayMsg_At(message, i));
    }
    return text;
  }
  const auto describe = [&](const auto& offset, const auto& scale, const auto& box,
                            const auto& points, const auto& intensities) {
    out << " offset " << *offset(message) << " scale " << *scale(message);
    out << " box " << box(message)->center << box(message)->size;
    DescribeItems(out, points(message, 0));
    DescribeItems(out, intensities(message, 0));
  };
  if (kind == MxKind::surface) {
    out << "surface " << MxSurfaceMsg_Width(message) << 'x' << MxSurfaceMsg_Length(message)
        << " resampled " << MxSurfaceMsg_IsResampled(message);
    describe(MxSurfaceMsg_Offset, MxSurfaceMsg_Scale, MxSurfaceMsg_BoundingBox,
             MxSurfaceMsg_PointsArray, MxSurfaceMsg_Intensities);
  } else {
    out << "profile " << MxProfileMsg_PointCount(message);
    describe(MxProfileMsg_Offset, MxProfileMsg_Scale, MxProfileMsg_BoundingBox,
             MxProfileMsg_PointsArray, MxProfileMsg_IntensityArray);
  }
  const auto& [frame, time, encoder, zEncoder, inputs, reserved] = *MxDataMsg_Stamp(message);
  out << " stamp " << frame << ' ' << time << ' ' << encoder << ' ' << zEncoder << ' ' << inputs;
  for (const auto word : reserved) out << ' ' << word;
  return out.str();
}

Handle MessageOf(const Plovia::SurfaceStream& surface) {
  std::vector<z16s> heights;
  const BoundingBox6 box = surface.heights(
      [&](std::span<const z16s> some) { heights.insert(heights.end(), some.begin(), some.end()); });
  heights.resize(zSize{surface.width} * surface.length);
  Handle message =
      MakeSurface(surface.width, surface.length, heights, surface.scale, surface.offset);
  MustBeOk(MxDataMsg_SetStamp(message.Get(), 0, &surface.stamp));
  MustBeOk(MxSurfaceMsg_SetBoundingBox(message.Get(), &box));
  return message;
}

std::string Describe(const Frame& frame) {
  std::string text;
  for (const Handle& message : frame) text += Describe(message.Get()) + "\n";
  return text;
}

Plovia::ReplayScannerInfo MakeScanner() {
  return {"r4xxx",
          "Scanner-0",
          "Scanner 0",
          {{"Top", "Top side", 14, 0, 0},
           {"Cloud", "Cloud", 15, 0, 1},
           {"Line", "Line", 12, 0, ~z64u{0}},
           {"Trace", "Trace \xC3\xA4", 13, 0, 0},
           {"Many", "Many", 14, 1, 0}}};
}

Frame MakeFrame(int seed) {
  return {MakeSurfaceWithIntensity(seed), MakeCloud(seed), MakeProfile(zType::z16s, seed),
          MakeProfile(zType::zPoint16s, seed),
          MakeArrayOf({MakeSurfaceWithIntensity(seed + 1), MakeCloud(seed + 1)})};
}

zBytes WriteRecording(const Plovia::ReplayScannerInfo& scanner, const std::vector<Frame>& frames,
                      bool classic) {
  const Handle stream = MakeStream();
  Plovia::ReplaySerializer serializer;
  serializer.BeginReplay(stream.Get(), classic);
  serializer.WriteScannerInfo({scanner});
  z32u index = 40;
  for (const Frame& frame : frames) {
    serializer.WriteIndexInfo(index++);
    for (const Handle& message : frame) serializer.WriteData(message);
  }
  serializer.EndReplay();
  return BytesOf(stream.Get());
}

Frame MessagesOf(const Plovia::ReplaySerializer& reader, const Plovia::ReplayFrame& frame) {
  Frame messages;
  for (zSize i = 0; i < frame.messageCount; ++i) {
    messages.push_back(reader.ReadMessage(frame.firstMessage + i));
  }
  return messages;
}

std::vector<Plovia::ReplayProblem> CheckReplay(const zBytes& replay) {
  std::vector<Plovia::ReplayProblem> problems;
  try {
    Plovia::ReplaySerializer serializer;
    serializer.LoadDamaged(SourceOf(replay), problems);
  } catch (const Orv::Exception&) {
    // There are as many problems as are kept.
  }
  std::ranges::stable_sort(problems, {}, [](const Plovia::ReplayProblem& problem) {
    return std::tie(problem.offset, problem.inChunk);
  });
  return problems;
}

std::string ReadRecording(zSourcePtr stream) {
  Plovia::ReplaySerializer serializer;
  serializer.LoadBuffer(std::move(stream));
  std::ostringstream out;
  for (const Plovia::ReplayScannerInfo& scanner : serializer.ReadScannerInfo()) {
    out << "scanner " << scanner.family << '|' << scanner.id << '|' << scanner.displayName << '\n';
    for (const auto& [name, displayName, dataType, arrayed, reserved] : scanner.sources) {
      out << "source " << name << '|' << displayName << '|' << dataType << '|' << int{arrayed}
          << '|' << reserved << '\n';
    }
  }
  ForEachFrame(serializer, [&](z64u, z32u index, const Frame& frame) {
    out << "frame " << index << '\n' << Describe(frame);
  });
  return out.str();
}
