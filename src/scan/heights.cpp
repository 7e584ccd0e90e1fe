// SPDX-License-Identifier: MIT
#include "scan/heights.h"

#include <bit>
#include <limits>

#include "scan/points.h"

namespace {

z16s HeightOf(z16s height) { return height; }
z16s HeightOf(const zPoint16s& point) { return point.z; }
z16s HeightOf(const zPoint3d16s& point) { return point.z; }

// A loop that compilers turn into vector instructions: they would keep a choice between results of
// arithmetic as a branch, so it is made with a mask of bits.
template <class Number, class Bits>
void Fill(const Scan& scan, Number* heights, zVectors vectors) {
  static_assert(sizeof(Number) == sizeof(Bits));
  WithPoints(scan, [&](auto points) {
    zVectors_Run(vectors, [points, z = scan.Z(), heights] {
      constexpr auto kNone = std::bit_cast<Bits>(std::numeric_limits<Number>::quiet_NaN());
      const auto* point = points.data();
      const zSize count = points.size();
      const Axis axis = z;
      Number* const to = heights;
      for (zSize i = 0; i < count; ++i) {
        const auto height =
            std::bit_cast<Bits>(static_cast<Number>(Real(HeightOf(point[i]), axis)));
        const Bits invalid = Bits{0} - static_cast<Bits>(!IsValid(point[i]));
        to[i] = std::bit_cast<Number>((height & ~invalid) | (kNone & invalid));
      }
    });
  });
}

}  // namespace

void FillHeights(const Scan& scan, z32f* heights, zVectors vectors) {
  Fill<z32f, z32u>(scan, heights, vectors);
}

void FillHeights(const Scan& scan, z64f* heights, zVectors vectors) {
  Fill<z64f, z64u>(scan, heights, vectors);
}
