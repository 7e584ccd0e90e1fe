// SPDX-License-Identifier: MIT
// Core library: statuses, primitive types, allocators, arrays, lists, streams, files, directories.
//
// Every operation that returns a zStatus returns zOK (1) on success and one of the other codes
// on failure; none of them throws or ends the process. An output handle is written on success only.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using z8u = std::uint8_t;
using z16s = std::int16_t;
using z16u = std::uint16_t;
using z32s = std::int32_t;
using z32u = std::uint32_t;
using z64s = std::int64_t;
using z64u = std::uint64_t;
using z32f = float;
using z64f = double;
using zSize = std::size_t;

using zStatus = z32s;
inline constexpr zStatus zOK = 1;
inline constexpr zStatus zERROR_PARAMETER = -2;  // null or wrong handle, type, shape or index
inline constexpr zStatus zERROR_MEMORY = -3;     // the memory is not there
inline constexpr zStatus zERROR_STREAM = -4;     // data ends too early, or the device failed
inline constexpr zStatus zERROR_NOT_FOUND = -5;  // no such file or directory
inline constexpr zStatus zERROR_FORMAT = -6;     // the data is not what its format demands

// Every format here is little-endian, and so is every machine the tool runs on: numbers are
// copied as they stand.
static_assert(std::endian::native == std::endian::little);
// So are floats; one that is too large becomes infinite.
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559);

// Handle of a reference-counted object. Construct operations hand out one reference;
// zObject_Share adds one and zObject_DestroyImpl gives one back.
using zObject = void*;
using zArray1 = zObject;
using zArray2 = zObject;
using zArrayList = zObject;
using zStream = zObject;
using zMemory = zObject;  // a zStream
using zFile = zObject;    // a zStream
using zCoreLib = zObject;

struct zPoint16s {
  z16s x, z;
};
struct zPoint3d16s {
  z16s x, y, z;
};
struct zPoint3d32f {
  z32f x, y, z;
};
struct zPoint3d64f {
  z64f x, y, z;
};
static_assert(sizeof(zPoint3d64f) == 3 * sizeof(z64f));
using zString = std::string;

// Item types of arrays, lists and primitives in streams.
enum class zType : z8u {
  none,
  z8u,
  z16s,
  z32s,
  z32u,
  z32f,
  z64f,
  zPoint16s,
  zPoint3d16s,
  zPoint3d32f,
  zString,  // lists only
};

template <class Item>
inline constexpr zType zTypeOf = std::is_same_v<Item, z8u>           ? zType::z8u
                                 : std::is_same_v<Item, z16s>        ? zType::z16s
                                 : std::is_same_v<Item, z32s>        ? zType::z32s
                                 : std::is_same_v<Item, z32u>        ? zType::z32u
                                 : std::is_same_v<Item, z32f>        ? zType::z32f
                                 : std::is_same_v<Item, z64f>        ? zType::z64f
                                 : std::is_same_v<Item, zPoint16s>   ? zType::zPoint16s
                                 : std::is_same_v<Item, zPoint3d16s> ? zType::zPoint3d16s
                                 : std::is_same_v<Item, zPoint3d32f> ? zType::zPoint3d32f
                                 : std::is_same_v<Item, zString>     ? zType::zString
                                                                     : zType::none;

// Bytes of one item; 0 for zType::none and zType::zString.
zSize zType_Size(zType type) noexcept;

// Where arrays, messages and the buffers of files take their memory from.
class zAllocator {
 public:
  virtual ~zAllocator() = default;

  // `bytes` uninitialized bytes, aligned for any item type; null when they cannot be had.
  virtual void* Allocate(zSize bytes) noexcept = 0;
  // The same, filled with zeros.
  virtual void* AllocateZeroed(zSize bytes) noexcept = 0;
  // Gives back a block of either kind; null is ignored.
  virtual void Free(void* block) noexcept = 0;

  // The process-wide allocator. Large blocks ask the system for large pages, which makes touching
  // a fresh buffer several times cheaper.
  static zAllocator& Default() noexcept;
};
using zAlloc = zAllocator*;

// Standard allocator over zAllocator::Default() that leaves new items uninitialized: a vector that
// is resized and then read into is not cleared first.
template <class Item>
struct zUninitializedAllocator {
  static_assert(std::is_trivially_copyable_v<Item>);
  using value_type = Item;

  zUninitializedAllocator() noexcept = default;
  template <class Other>
  zUninitializedAllocator(const zUninitializedAllocator<Other>&) noexcept {}

  Item* allocate(zSize count) {
    if (count > std::size_t(-1) / sizeof(Item)) throw std::bad_array_new_length();
    void* block = zAllocator::Default().Allocate(count * sizeof(Item));
    if (block == nullptr) throw std::bad_alloc();
    return static_cast<Item*>(block);
  }
  void deallocate(Item* block, zSize) noexcept { zAllocator::Default().Free(block); }

  template <class Other>
  void construct(Other* item) noexcept {
    ::new (static_cast<void*>(item)) Other;
  }
  template <class Other, class... Args>
  void construct(Other* item, Args&&... args) {
    ::new (static_cast<void*>(item)) Other(std::forward<Args>(args)...);
  }
  bool operator==(const zUninitializedAllocator&) const noexcept = default;
};

// A byte vector whose resize() does not clear the new bytes.
using zBytes = std::vector<z8u, zUninitializedAllocator<z8u>>;

zStatus zCoreLib_Construct(zCoreLib* library) noexcept;

// Adds a reference.
zStatus zObject_Share(zObject object) noexcept;
// Gives a reference back; the last one destroys the object. `mode` is 1 when an owning handle ends
// and 0 when it is reset. Fails for a null handle, and with the object's own status when its
// destruction could not finish its work (a file whose last bytes cannot be written).
zStatus zObject_DestroyImpl(zObject object, z32s mode) noexcept;

// Arrays --------------------------------------------------------------------------------------
// Lengths may be 0. Fails for a negative length, a list-only item type, and for more items than
// the machine can give. New items are uninitialized.
zStatus zArray1_Construct(zArray1* array, zType itemType, z64s length, zAlloc alloc) noexcept;
// `length0` rows of `length1` columns, row 0 first.
zStatus zArray2_Construct(zArray2* array, zType itemType, z64s length0, z64s length1,
                          zAlloc alloc) noexcept;

zType zArray_ItemType(zObject array) noexcept;
zSize zArray_Count(zObject array) noexcept;  // of all items
// The items, valid as long as the array; null for a handle that is no array.
const void* zArray_Data(zObject array) noexcept;
// The items for writing. Items that are shared with another owner (a copied array, a recording's
// payload) are copied first, so no other owner sees the change; null when that copy cannot be had.
void* zArray_EditableData(zObject array) noexcept;

// Typed views; empty when the array holds another item type.
template <class Item>
std::span<const Item> zArray_Items(zObject array) noexcept {
  if (zArray_ItemType(array) != zTypeOf<Item>) return {};
  return {static_cast<const Item*>(zArray_Data(array)), zArray_Count(array)};
}
template <class Item>
std::span<Item> zArray_EditableItems(zObject array) noexcept {
  if (zArray_ItemType(array) != zTypeOf<Item>) return {};
  auto* items = static_cast<Item*>(zArray_EditableData(array));
  return {items, items == nullptr ? 0 : zArray_Count(array)};
}

// Lists ---------------------------------------------------------------------------------------
zStatus zArrayList_Construct(zArrayList* list, zType itemType, zSize capacity,
                             zAlloc alloc) noexcept;
// Appends a copy of the item at `item`, which has the list's item type.
zStatus zArrayList_Add(zArrayList list, const void* item) noexcept;
zType zArrayList_ItemType(zArrayList list) noexcept;
zSize zArrayList_Count(zArrayList list) noexcept;
// Address of an item, valid until the next Add; null past the end.
const void* zArrayList_At(zArrayList list, zSize index) noexcept;

// Sources -------------------------------------------------------------------------------------
// Bytes that are read where and when they are needed, of a file or of a part of one.
class zSource {
 public:
  virtual ~zSource() = default;

  virtual z64u Size() const noexcept = 0;
  // Reads `size` bytes from `offset` on, all of which lie inside. Throws what its owner has to say
  // when they cannot be had, or are no longer what they were.
  virtual void Read(z64u offset, void* destination, zSize size) const = 0;
  // All of the bytes, where they are in memory; otherwise null.
  virtual const z8u* Bytes() const noexcept { return nullptr; }
  // How many bytes whoever needs all of them should read at a time.
  virtual zSize Piece() const noexcept { return zSize{256} << 10; }
};
using zSourcePtr = std::shared_ptr<const zSource>;

// Bytes in memory, which must outlive the source.
class zMemorySource final : public zSource {
 public:
  explicit zMemorySource(std::span<const z8u> bytes) noexcept : bytes_(bytes) {}

  z64u Size() const noexcept override { return bytes_.size(); }
  void Read(z64u offset, void* destination, zSize size) const override;
  const z8u* Bytes() const noexcept override { return bytes_.data(); }

 private:
  std::span<const z8u> bytes_;
};

// A part of another source, in which it lies.
class zSourceWindow final : public zSource {
 public:
  zSourceWindow(zSourcePtr whole, z64u offset, z64u size) noexcept
      : whole_(std::move(whole)), offset_(offset), size_(size) {}

  z64u Size() const noexcept override { return size_; }
  void Read(z64u offset, void* destination, zSize size) const override {
    whole_->Read(offset_ + offset, destination, size);
  }
  const z8u* Bytes() const noexcept override {
    return whole_->Bytes() == nullptr ? nullptr : whole_->Bytes() + offset_;
  }
  zSize Piece() const noexcept override { return whole_->Piece(); }

 private:
  zSourcePtr whole_;
  z64u offset_, size_;
};

// Streams -------------------------------------------------------------------------------------
zStatus zStream_Write(zStream stream, const void* source, zSize size) noexcept;
// Moves to `position` bytes from the start, where writing goes on; past the end is a failure.
zStatus zStream_Seek(zStream stream, z64u position) noexcept;

// A memory stream that grows as it is written.
zStatus zMemory_Construct(zMemory* stream, zAlloc alloc) noexcept;
// What was written, valid until the next write.
std::span<const z8u> zMemory_Bytes(zMemory stream) noexcept;

// A stream that takes whatever is written, and drops it.
zStatus zNowhere_Construct(zStream* stream) noexcept;

// Writes `count` consecutive primitives of `type` (points are taken as their coordinates),
// little-endian.
zStatus zStream_WritePrimitives(zStream stream, zType type, const void* items,
                                zSize count) noexcept;

// Files and directories -----------------------------------------------------------------------
inline constexpr z32s zFILE_READ = 1;
inline constexpr z32s zFILE_WRITE = 2;  // creates or truncates
inline constexpr z32s zFILE_NEW = 3;    // creates, and fails where there is a file

// A path that exists and is no directory. A name the system cannot take does not exist.
bool zFile_Exists(const char* path) noexcept;
zStatus zFile_Construct(zFile* file, const char* path, z32s mode, zAlloc alloc) noexcept;
// Bytes of a file that is open for reading, as it was opened; less than 0 when that cannot be told.
z64s zFile_Size(zFile file) noexcept;
// Reads exactly `size` bytes from `offset` on. Fails also when the file is no longer the one that
// was opened: when it has another size, or was written to.
zStatus zFile_Read(zFile file, z64u offset, void* destination, zSize size) noexcept;
// Gives a file just opened a write buffer of `size` bytes. What is left in it is written when the
// file is destroyed; that destruction reports a failed write.
zStatus zFile_SetWriteBuffer(zFile file, zSize size) noexcept;
// Whether a write has failed.
bool zFile_HasFailed(zFile file) noexcept;

bool zDirectory_Exists(const char* path) noexcept;
// Appends the names (without the directory) of the files in `path` to a list of zString, in
// ascending order of their bytes.
zStatus zDirectory_ListFiles(const char* path, zArrayList names) noexcept;

// Whether standard error goes to a terminal.
bool zConsole_ErrorsAreSeen() noexcept;
