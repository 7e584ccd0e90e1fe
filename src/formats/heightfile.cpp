// SPDX-License-Identifier: MIT
#include "formats/heightfile.h"

zStatus LoadHeights(HeightFile& file, Scan& record, zAlloc alloc) {
  record = std::move(file.scan);
  const zStatus status =
      record.IsProfile()
          ? zArray1_Construct(record.points.Out(), zType::z16s, record.width, alloc)
          : zArray2_Construct(record.points.Out(), zType::z16s, record.length, record.width, alloc);
  return status == zOK ? file.read(zArray_EditableItems<z16s>(record.points.Get())) : status;
}
