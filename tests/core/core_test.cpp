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

TEST(Memory, IsWrittenAnywhereUpToItsEnd) {
  const Handle stream = MakeStream();
  const z16s numbers[] = {1, -2, 3};
  EXPECT_EQ(zStream_WritePrimitives(stream.Get(), zType::z16s, numbers, 3), zOK);
  EXPECT_EQ(zStream_Seek(stream.Get(), 7), zERROR_STREAM);
  EXPECT_EQ(zStream_Seek(stream.Get(), 4), zOK);
  EXPECT_EQ(zStream_Write(stream.Get(), "abc", 3), zOK);
  EXPECT_EQ(BytesOf(stream.Get()), ToBytes(std::string_view("\1\0\xFE\xFF"
                                                            "abc",
                                                            7)));
}

TEST(File, WritesAndReads) {
  const TempDirectory directory;
  Handle file;
  ASSERT_EQ(zFile_Construct(file.Out(), "file", zFILE_WRITE, DefaultAlloc()), zOK);
  EXPECT_EQ(zFile_SetWriteBuffer(file.Get(), 16), zOK);
  EXPECT_EQ(zStream_Write(file.Get(), "0123456789abcdefghij", 20), zOK);
  static_cast<void>(std::exchange(file, Handle()));  // the old one closes the file
  ASSERT_EQ(zFile_Construct(file.Out(), "file", zFILE_READ, DefaultAlloc()), zOK);
  EXPECT_EQ(zFile_Size(file.Get()), 20);
  char bytes[4] = {};
  EXPECT_EQ(zFile_Read(file.Get(), 18, bytes, 3), zERROR_STREAM);
  EXPECT_EQ(zFile_Read(file.Get(), 17, bytes, 3), zOK);
  EXPECT_STREQ(bytes, "hij");
  std::filesystem::resize_file("file", 19);  // by somebody else
  EXPECT_EQ(zFile_Read(file.Get(), 0, bytes, 3), zERROR_STREAM);
  EXPECT_EQ(zFile_Construct(file.Out(), ".", zFILE_READ, DefaultAlloc()), zERROR_NOT_FOUND);
}

TEST(Library, RefusesWrongUse) {
  const Handle surface = MakeSurface(1, 1, {1}), stream = MakeStream();
  const MxStamp stamp{};
  Handle out, list, array, tar;
  MustBeOk(zArrayList_Construct(list.Out(), zType::zPoint3d32f, 0, DefaultAlloc()));
  MustBeOk(MxArrayMsg_Construct(array.Out(), DefaultAlloc()));
  MustBeOk(zTar_Construct(tar.Out(), stream.Get(), DefaultAlloc()));
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
      zTar_Construct(out.Out(), surface.Get(), DefaultAlloc()),
      zTar_BeginWrite(tar.Get(), "d", zTAR_OTHER),
      zStream_Write(tar.Get(), "x", 1),  // no member has begun
      zStream_Write(stream.Get(), nullptr, 1),
  };
  for (const zStatus& status : refused) EXPECT_EQ(status, zERROR_PARAMETER) << &status - refused;
  EXPECT_EQ(MxArrayMsg_At(array.Get(), 0), nullptr);
  EXPECT_EQ(zArrayList_At(list.Get(), 0), nullptr);
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
