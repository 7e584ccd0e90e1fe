// SPDX-License-Identifier: MIT
#include "formats/digitalsurf/layout.h"

#include <algorithm>
#include <tuple>
#include <type_traits>

#include "statuses.h"

namespace {

// How a member's type stands in the file.
template <class Value>
struct Primitives {
  static constexpr zType type = zTypeOf<Value>;
  static constexpr zSize count = 1;
};
template <zSize Size>
struct Primitives<SurText<Size>> {
  static constexpr zType type = zType::z8u;
  static constexpr zSize count = Size;
};

// A field's place in the file, its value in the record and its default.
template <class Value>
struct SurField : Primitives<Value> {
  static constexpr bool isText = !std::is_arithmetic_v<Value>;
  using Default = std::conditional_t<isText, std::string_view, Value>;

  constexpr SurField(zSize offsetInFile, Value SurHeader::*memberOfHeader,
                     Default defaultValue = {})
      : offset(offsetInFile), member(memberOfHeader), initial(defaultValue) {}

  zSize offset;
  Value SurHeader::*member;
  Default initial;
};

constexpr std::tuple kSurFields{
    SurField(0, &SurHeader::signature, kSurSignature),
    SurField(12, &SurHeader::format),
    SurField(14, &SurHeader::objectCount, 1),
    SurField(16, &SurHeader::version, 1),
    SurField(18, &SurHeader::objectType, kSurfaceObject),
    SurField(20, &SurHeader::objectName),
    SurField(50, &SurHeader::operatorName),
    SurField(80, &SurHeader::materialCode, 1),
    SurField(82, &SurHeader::acquisitionType, 10),
    SurField(84, &SurHeader::rangeType),
    SurField(86, &SurHeader::specialPoints, 1),
    SurField(88, &SurHeader::absolute, 1),
    SurField(90, &SurHeader::gaugeResolution),
    SurField(94, &SurHeader::reserved),
    SurField(98, &SurHeader::bitsPerPoint, 16),
    SurField(100, &SurHeader::zMin),
    SurField(104, &SurHeader::zMax),
    SurField(108, &SurHeader::pointsPerLine),
    SurField(112, &SurHeader::lineCount),
    SurField(116, &SurHeader::totalPoints),
    SurField(120, &SurHeader::xSpacing),
    SurField(124, &SurHeader::ySpacing),
    SurField(128, &SurHeader::zSpacing),
    SurField(132, &SurHeader::xAxisName, "X"),
    SurField(148, &SurHeader::yAxisName, "Y"),
    SurField(164, &SurHeader::zAxisName, "Z"),
    SurField(180, &SurHeader::xSpacingUnit, "mm"),
    SurField(196, &SurHeader::ySpacingUnit, "mm"),
    SurField(212, &SurHeader::zSpacingUnit, "mm"),
    SurField(228, &SurHeader::xLengthUnit, "mm"),
    SurField(244, &SurHeader::yLengthUnit, "mm"),
    SurField(260, &SurHeader::zLengthUnit, "mm"),
    SurField(276, &SurHeader::xUnitRatio, 1),
    SurField(280, &SurHeader::yUnitRatio, 1),
    SurField(284, &SurHeader::zUnitRatio, 1),
    SurField(288, &SurHeader::imprint),
    SurField(290, &SurHeader::inversion),
    SurField(292, &SurHeader::levelling),
    SurField(294, &SurHeader::obsolete1),
    SurField(306, &SurHeader::seconds),
    SurField(308, &SurHeader::minutes),
    SurField(310, &SurHeader::hours),
    SurField(312, &SurHeader::day),
    SurField(314, &SurHeader::month),
    SurField(316, &SurHeader::year),
    SurField(318, &SurHeader::dayOfWeek),
    SurField(320, &SurHeader::measurementDuration),
    SurField(324, &SurHeader::obsolete2),
    SurField(328, &SurHeader::obsolete3),
    SurField(334, &SurHeader::commentSize),
    SurField(336, &SurHeader::privateSize),
    SurField(338, &SurHeader::clientZone),
    SurField(466, &SurHeader::xOffset),
    SurField(470, &SurHeader::yOffset),
    SurField(474, &SurHeader::zOffset),
    SurField(478, &SurHeader::tSpacing),
    SurField(482, &SurHeader::tOffset),
    SurField(486, &SurHeader::tAxisName),
    SurField(499, &SurHeader::tStepUnit),
};

// Gives the fields to `step` in file order, up to the first whose status is not 1.
template <class Step>
constexpr zStatus ForEachField(Step step) {
  zStatus status = zOK;
  std::apply(
      [&](const auto&... field) { static_cast<void>((((status = step(field)) == zOK) && ...)); },
      kSurFields);
  return status;
}

constexpr bool FieldsFillTheHeader() {
  zSize end = 0;
  const zStatus status = ForEachField([&](const auto& field) {
    const bool inPlace = field.offset == end;
    end += sizeof(SurHeader{}.*field.member);
    if constexpr (std::decay_t<decltype(field)>::isText) {
      if (field.initial.size() > field.count) return zERROR_PARAMETER;
    }
    return inPlace ? zOK : zERROR_PARAMETER;
  });
  return status == zOK && end == kSurHeaderSize;
}
static_assert(FieldsFillTheHeader());

template <class Value>
zSize FindOffset(Value SurHeader::*member) {
  zSize offset = 0;
  ForEachField([&](const auto& field) {
    if constexpr (std::is_same_v<decltype(field.member), Value SurHeader::*>) {
      if (field.member == member) offset = field.offset;
    }
    return zOK;
  });
  return offset;
}

}  // namespace

zSize SurFieldOffset(z16s SurHeader::*field) { return FindOffset(field); }
zSize SurFieldOffset(z32s SurHeader::*field) { return FindOffset(field); }

void InitSurHeader(SurHeader& header) {
  ForEachField([&](const auto& field) {
    auto& value = header.*field.member;
    if constexpr (std::decay_t<decltype(field)>::isText) {
      value.fill('\0');
      std::ranges::copy(field.initial, value.begin());
    } else {
      value = field.initial;
    }
    return zOK;
  });
}

zStatus ReadSurHeader(FileReader& file, SurHeader& header) {
  return ForEachField([&](const auto& field) {
    const zStatus status = file.Read(field.type, &(header.*field.member), field.count);
    if (status != zOK || field.offset != 0) return status;
    return std::ranges::equal(header.signature, kSurSignature) ? zOK : kRefused;
  });
}

zStatus WriteSurHeader(zStream stream, const SurHeader& header) {
  return ForEachField([&](const auto& field) {
    return zStream_WritePrimitives(stream, field.type, &(header.*field.member), field.count);
  });
}
