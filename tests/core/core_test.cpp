// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>

#include "sdk/archive.h"
#include "support/scans.h"
#include "support/temp_directory.h"

namespace {

TEST(Array, RefusesWhatCannotBe) {
  constexpr z64s kMost = std::numeric_limits<z64s>::max();
  const struct {
    zType type;
    z64s length0, length1;
    zStatus status;
  } rows[] = {
      {zType::z16s, 0, kMost, zOK},
      {zType::z16s, 1, -1, zERROR_PARAMETER},
      {zType::zString, 1, 1, zERROR_PARAMETER},
      {zType::z8u, z64s{1} << 32, z64s{1} << 32, zERROR_MEMORY},  // 2^64 wraps to 0
      {zType::zPoint3d16s, kMost / 3, 1, zERROR_MEMORY},          // the size in bytes wraps
      {zType::z8u, kMost, 1, zERROR_MEMORY},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.length0 << " x " << row.length1);
    Handle array;
    EXPECT_EQ(zArray2_Construct(array.Out(), row.type, row.length0, row.length1, DefaultAlloc()),
              row.status);
    EXPECT_EQ(static_cast<bool>(array), row.status == zOK);
  }
}

TEST(Memory, ReadsAnAttachedBufferInPlace) {
  const z16s numbers[] = {1, -2, 3};
  const Handle stream = MakeStream();
  EXPECT_EQ(zMemory_Attach(stream.Get(), numbers, 3, 2, 6), zERROR_PARAMETER);
  EXPECT_EQ(zMemory_Attach(stream.Get(), numbers, 0, 7, 6), zERROR_PARAMETER);
  ASSERT_EQ(zMemory_Attach(stream.Get(), numbers, 2, 6, 6), zOK);
  EXPECT_EQ(zStream_Write(stream.Get(), numbers, 1), zERROR_STREAM);

  Handle serializer, array;
  MustBeOk(zDat6Serializer_Construct(serializer.Out(), stream.Get(), DefaultAlloc()));
  MustBeOk(zArray1_Construct(array.Out(), zType::z16s, 2, DefaultAlloc()));
  EXPECT_EQ(zSerializer_ReadPrimitives(serializer.Get(), array.Get(), 3, 1), zERROR_PARAMETER);
  EXPECT_EQ(zSerializer_ReadPrimitives(serializer.Get(), array.Get(), 2, 1), zOK);
  EXPECT_EQ(ItemsOf<z16s>(array.Get()), (std::vector<z16s>{-2, 3}));
  EXPECT_EQ(zSerializer_ReadPrimitives(serializer.Get(), array.Get(), 1, 1), zERROR_STREAM);
}

TEST(File, WritesAndReads) {
  const TempDirectory directory;
  Handle file;
  ASSERT_EQ(zFile_Construct(file.Out(), "file", zFILE_WRITE, DefaultAlloc()), zOK);
  EXPECT_EQ(zFile_SetWriteBuffer(file.Get(), 16), zOK);
  EXPECT_EQ(zStream_Write(file.Get(), "0123456789abcdefghij", 20), zOK);
  static_cast<void>(std::exchange(file, Handle()));  // the old one closes the file
  EXPECT_EQ(zFile_Size("file"), 20U);
  ASSERT_EQ(zFile_Construct(file.Out(), "file", zFILE_READ, DefaultAlloc()), zOK);
  char bytes[4] = {};
  EXPECT_EQ(zStream_Seek(file.Get(), 21), zERROR_STREAM);
  EXPECT_EQ(zStream_Seek(file.Get(), 17), zOK);
  EXPECT_EQ(zStream_Read(file.Get(), bytes, 3), zOK);
  EXPECT_STREQ(bytes, "hij");
  EXPECT_EQ(zStream_Read(file.Get(), bytes, 1), zERROR_STREAM);
  EXPECT_EQ(zFile_Construct(file.Out(), ".", zFILE_READ, DefaultAlloc()), zERROR_NOT_FOUND);
}

TEST(Library, RefusesWrongUse) {
  const Handle surface = MakeSurface(1, 1, {1}), stream = MakeStream();
  const MxStamp stamp{};
  Handle out, list, array, tar;
  MustBeOk(zArrayList_Construct(list.Out(), zType::zPoint3d32f, 0, DefaultAlloc()));
  MustBeOk(MxArrayMsg_Construct(array.Out(), DefaultAlloc()));
  MustBeOk(zTar_Construct(tar.Out(), stream.Get(), zTAR_WRITE, DefaultAlloc()));
  const zStatus refused[] = {
      MxProfileMsg_Construct(out.Out(), zType::z8u, 1, 1, DefaultAlloc()),
      MxProfileMsg_Construct(out.Out(), zType::z16s, 2, 1, DefaultAlloc()),
      MxDataMsg_SetStamp(surface.Get(), 1, &stamp),
      MxDataMsg_SetStamp(surface.Get(), 0, nullptr),
      MxDataMsg_SetTime(array.Get(), 1),
      MxDataMsg_SetEncoder(array.Get(), 1),
      MxSurfaceMsg_AllocateIntensity(surface.Get(), zType::z16s),
      MxArrayMsg_Add(array.Get(), array.Get()),
      zArrayList_Construct(out.Out(), zType::none, 0, DefaultAlloc()),
      zArrayList_Add(list.Get(), nullptr),
      zFile_Construct(out.Out(), "x", 7, DefaultAlloc()),
      zFile_SetWriteBuffer(stream.Get(), 16),
      zTar_Construct(out.Out(), surface.Get(), zTAR_WRITE, DefaultAlloc()),
      zTar_Construct(out.Out(), stream.Get(), 7, DefaultAlloc()),
      zTar_Construct(out.Out(), stream.Get(), zTAR_READ, DefaultAlloc()),
      zTar_BeginWrite(tar.Get(), "d", zTAR_DIRECTORY, 1),
      zStream_Seek(tar.Get(), 0),
      zStream_Read(stream.Get(), nullptr, 1),
      zStream_Write(stream.Get(), nullptr, 1),
  };
  for (const zStatus& status : refused) EXPECT_EQ(status, zERROR_PARAMETER) << &status - refused;
  EXPECT_EQ(MxArrayMsg_At(array.Get(), 0), nullptr);
  EXPECT_EQ(zArrayList_At(list.Get(), 0), nullptr);
  EXPECT_EQ(zMemory_At(stream.Get(), 1), nullptr);
  EXPECT_EQ(zStream_Seek(stream.Get(), -1), zERROR_STREAM);
  EXPECT_EQ(zTar_WriteFile(tar.Get(), "short", MakeStream().Get(), 1), zERROR_STREAM);
  EXPECT_EQ(zStream_Write(tar.Get(), "xy", 2), zERROR_PARAMETER);  // more than was announced
  EXPECT_EQ(tar.Release(), zERROR_STREAM);                         // "short" is not whole
}

TEST(Directory, ListsTheNamesOfItsFilesInOrder) {
  const TempDirectory directory;
  std::filesystem::create_directory("folder.sur");
  for (const char* name : {"b.sur", "a 10", "a 9", "C"}) WriteFile(name, "");
  Handle names;
  MustBeOk(zArrayList_Construct(names.Out(), zType::zString, 10, DefaultAlloc()));
  EXPECT_EQ(zDirectory_ListFiles(".", names.Get()), zOK);
  std::string found;
  for (zSize i = 0; i < zArrayList_Count(names.Get()); ++i) {
    found += *static_cast<const zString*>(zArrayList_At(names.Get(), i)) + ", ";
  }
  EXPECT_EQ(found, "C, a 10, a 9, b.sur, ");
  EXPECT_EQ(zArrayList_At(names.Get(), 4), nullptr);
  EXPECT_FALSE(zFile_Exists("folder.sur"));

  const std::string tooLong(100000, 'x');
  EXPECT_FALSE(zFile_Exists(tooLong.c_str()));
  EXPECT_EQ(zDirectory_ListFiles(tooLong.c_str(), names.Get()), zERROR_NOT_FOUND);
}

}  // namespace
