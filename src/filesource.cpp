// SPDX-License-Identifier: MIT
#include "filesource.h"

#include <filesystem>

#include "statuses.h"

namespace {

constexpr Orv::Operation kOperation{"surfacefileconverter", "ReadFileBuffer"};

class FileSource final : public zSource {
 public:
  explicit FileSource(const std::string& path) : path_(path) {
    std::error_code unknown;
    // Opening a pipe would wait for whoever writes into it; it has no size to read anyway.
    if (std::filesystem::is_fifo(path, unknown)) FailToRead();
    const zStatus opened =
        zFile_Construct(file_.Out(), path.c_str(), zFILE_READ, &zAllocator::Default());
    if (opened != zOK) {
      throw FileNotRead(kOperation.Error(kBadInput, "Failed to open " + path));
    }
    const z64s size = zFile_Size(file_.Get());
    if (size == 0) kOperation.Fail(kBadInput, "The inputted file is empty");
    if (size < 0) FailToRead();
    size_ = static_cast<z64u>(size);
  }

  z64u Size() const noexcept override { return size_; }
  void Read(z64u offset, void* destination, zSize size) const override {
    if (zFile_Read(file_.Get(), offset, destination, size) != zOK) FailToRead();
  }

 private:
  [[noreturn]] void FailToRead() const {
    throw FileNotRead(kOperation.Error(kBadInput, "Failed to read " + path_));
  }

  std::string path_;
  Orv::Object<void*> file_;
  z64u size_ = 0;
};

}  // namespace

zSourcePtr OpenFile(const std::string& path) { return std::make_shared<FileSource>(path); }

zBytes ReadAll(const zSource& source) {
  zBytes bytes(static_cast<zSize>(source.Size()));
  source.Read(0, bytes.data(), bytes.size());
  return bytes;
}
