// SPDX-License-Identifier: MIT
#include "inspect/progress.h"

#include <cstdio>

#include "sdk/object.h"

namespace {

constexpr double kMega = 1e6;

void Show(const std::string& text) {
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
  static_cast<void>(std::fflush(stderr));
}

}  // namespace

void Progress::AddBytes(z64u bytes) {
  bytes_ += bytes;
  const Clock::time_point now = Clock::now();
  if (!shown_ || now < next_) return;
  next_ = now + std::chrono::milliseconds(100);
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const double megabytes = static_cast<double>(bytes_) / kMega;
  Show(Orv::Format("\r%zu of %zu files, %.0f MB, %.0f MB/s\x1b[K", filesDone_, files_, megabytes,
                   megabytes / seconds));
  visible_ = true;
}

void Progress::Clear() {
  if (visible_) Show("\r\x1b[K");
  visible_ = false;
}
